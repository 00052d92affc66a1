#include "calllog.h"
#include "fakeencoderscript.h"
#include "fakevideoencoder.h"
#include "librarythread.h"
#include "messagelog.h"
#include "ocelleencoder.h"
#include "testpicture.h"

#include <QVideoFrame>
#include <QtTest>

using namespace Veltra::Ocelle;

namespace {

constexpr auto Unloaded = QPVEncoder::UnloadedStatus;
constexpr auto Loaded = QPVEncoder::LoadedStatus;
constexpr auto Stopping = QPVEncoder::StoppingStatus;
constexpr auto Starting = QPVEncoder::StartingStatus;
constexpr auto Active = QPVEncoder::ActiveStatus;
using Statuses = QList<QPVEncoder::Status>;

const QString Encoding("veltra.palaver.encoder.ocelle: ");

QVideoEncoderSettings h264(int bitRate = 500000)
{
    QVideoEncoderSettings settings;
    settings.setCodec("video/h264");
    settings.setBitRate(bitRate);
    settings.setFrameRate(25);
    return settings;
}

/*! An encoder object over a scripted encoder, "encoder 1", that the test shares. */
class EncoderFixture
{
public:
    EncoderFixture()
        : script(std::make_shared<FakeEncoderScript>())
        , fake(std::make_shared<FakeVideoEncoder>(1, script))
        , encoder(nullptr)
    {
        CallLog::instance().clear();
        QObject::connect(&encoder, &OcelleEncoder::statusChanged,
                         [this](QPVEncoder::Status status) { statuses.append(status); });
    }

    void start(const QVideoEncoderSettings &settings)
    {
        QVERIFY(encoder.load(fake));
        QVERIFY(encoder.start(settings));
    }
    QStringList calls() const { return CallLog::instance().texts(); }

    MessageLog messages;
    std::shared_ptr<FakeEncoderScript> script;
    std::shared_ptr<FakeVideoEncoder> fake;
    OcelleEncoder encoder;
    Statuses statuses;
};

} // namespace

class TestEncoder : public QObject
{
    Q_OBJECT
private slots:
    void codecType_knowsFourNamesExactly_data()
    {
        QTest::addColumn<QString>("codec");
        QTest::addColumn<int>("type");
        QTest::newRow("h264") << "video/h264" << 3;
        QTest::newRow("h265") << "video/h265" << 4;
        QTest::newRow("vp8") << "video/vp8" << 1;
        QTest::newRow("vp9") << "video/vp9" << 2;
        QTest::newRow("another case") << "video/H264" << 0;
        QTest::newRow("unknown") << "video/av1" << 0;
        QTest::newRow("empty") << "" << 0;
    }

    void codecType_knowsFourNamesExactly()
    {
        QFETCH(QString, codec);
        QFETCH(int, type);
        const MessageLog messages;
        QCOMPARE(static_cast<int>(OcelleEncoder::codecType(codec)), type);
        QStringList expected;
        if (type == 0)
            expected.append("warning " + Encoding + "Unknown encoder \"" + codec + '"');
        QCOMPARE(messages.messages(), expected);
    }

    void construction_isUnloaded()
    {
        QObject parent;
        OcelleEncoder encoder(&parent);
        QCOMPARE(encoder.parent(), &parent);
        QCOMPARE(encoder.status(), Unloaded);
    }

    void load_takesTheEncoderOnce()
    {
        EncoderFixture f;
        QVERIFY(f.encoder.load(f.fake));
        QCOMPARE(f.encoder.status(), Loaded);
        QVERIFY(!f.encoder.load(std::make_shared<FakeVideoEncoder>(2, f.script)));
        QCOMPARE(f.encoder.status(), Loaded);
        QCOMPARE(f.statuses, Statuses { Loaded });
        QCOMPARE(f.calls(), QStringList { "encoder 2: destroyed" }); // the first one stays
    }

    void load_ofNothing_unloadsFromAnyStatus()
    {
        EncoderFixture f;
        QVERIFY(!f.encoder.load(nullptr));
        QCOMPARE(f.statuses, Statuses()); // it was so already
        f.start(h264());
        QVERIFY(!f.encoder.load(nullptr));
        QCOMPARE(f.encoder.status(), Unloaded);
        QCOMPARE(f.statuses, (Statuses { Loaded, Starting, Unloaded }));
        f.fake.reset();
        QCOMPARE(f.calls(), QStringList { "encoder 1: destroyed" });
    }

    void start_isForALoadedEncoderOnly()
    {
        EncoderFixture f;
        QVERIFY(!f.encoder.start(h264()));
        QCOMPARE(f.encoder.status(), Unloaded);
        f.start(h264());
        QCOMPARE(f.encoder.status(), Starting);
        QVERIFY(!f.encoder.start(h264()));
        QCOMPARE(f.statuses, (Statuses { Loaded, Starting }));
        QCOMPARE(f.calls(), QStringList()); // untouched until the first picture
    }

    void encode_belowStarting_isRefusedInSilence()
    {
        EncoderFixture f;
        QVERIFY(!f.encoder.encode(testPicture()));
        QVERIFY(f.encoder.load(f.fake));
        QVERIFY(!f.encoder.encode(testPicture()));
        QCOMPARE(f.calls(), QStringList());
        QCOMPARE(f.messages.messages(), QStringList());
    }

    void firstPicture_configuresThenIsEncoded()
    {
        EncoderFixture f;
        f.start(h264());
        QVERIFY(f.encoder.encode(testPicture(40000)));
        QCOMPARE(f.encoder.status(), Active);
        QCOMPARE(f.statuses, (Statuses { Loaded, Starting, Active }));
        QVERIFY(f.encoder.encode(testPicture(80000)));
        QCOMPARE(f.calls(), (QStringList {
                                    "encoder 1: setParameter(2, 0)",
                                    "encoder 1: setParameter(4, false)",
                                    "encoder 1: setParameter(1, variable)",
                                    "encoder 1: initialize(codec 3, 64x48, stride 64, lines 48, "
                                    "500000 bit/s, 25 fps)",
                                    "encoder 1: encode(40000)",
                                    "encoder 1: encode(80000)",
                            }));
        QCOMPARE(f.messages.messages(),
                 QStringList("debug " + Encoding +
                             "options: rotation=0 mirrorV=false mirrorH=false bitrate=variable"));
    }

    void configuration_fillsInWhatTheSettingsLeaveOut_data()
    {
        QTest::addColumn<qreal>("frameRate");
        QTest::addColumn<int>("bitRate");
        QTest::addColumn<int>("configuredRate");
        QTest::addColumn<int>("configuredBitRate");
        QTest::newRow("nothing set") << 0.0 << 0 << 30 << 1000000;
        QTest::newRow("negative") << -1.0 << -1 << 30 << 1000000;
        QTest::newRow("fraction") << 29.97 << 1 << 29 << 1;
        QTest::newRow("less than one") << 0.99 << 8000 << 30 << 8000;
        QTest::newRow("not a number") << qQNaN() << 8000 << 30 << 8000;
        QTest::newRow("no number at all") << qInf() << 8000 << 2147483647 << 8000;
        QTest::newRow("largest") << 1e300 << 2147483647 << 2147483647 << 2147483647;
    }

    void configuration_fillsInWhatTheSettingsLeaveOut()
    {
        QFETCH(qreal, frameRate);
        QFETCH(int, bitRate);
        EncoderFixture f;
        QVideoEncoderSettings settings = h264(bitRate);
        settings.setFrameRate(frameRate);
        f.start(settings);
        QVERIFY(f.encoder.encode(testPicture()));
        QTEST(f.fake->config().frameRate, "configuredRate");
        QTEST(f.fake->config().bitrate, "configuredBitRate");
    }

    void options_reachTheEncoderAsText_data()
    {
        QTest::addColumn<QString>("option");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("rotation");
        QTest::addColumn<QString>("mirrorV");
        QTest::addColumn<QString>("mirrorH");
        const auto row = [](const char *name, const char *option, const QVariant &value,
                            const char *rotation, const char *mirrorV, const char *mirrorH) {
            QTest::newRow(name) << option << value << rotation << mirrorV << mirrorH;
        };
        row("quarter turn", "rotate", 90, "90", "false", "false");
        row("quarter turn back", "rotate", -90, "270", "false", "false");
        row("two turns", "rotate", 720, "0", "false", "false");
        row("more than one turn", "rotate", 450, "90", "false", "false");
        row("far back", "rotate", -450, "-90", "false", "false");
        row("largest", "rotate", 2147483647, "127", "false", "false");
        row("least", "rotate", -2147483647 - 1, "-128", "false", "false");
        row("number as text", "rotate", "180", "180", "false", "false");
        row("no number", "rotate", "left", "0", "false", "false");
        row("no value", "rotate", QVariant(), "0", "false", "false");
        row("no such type", "rotate", QStringList { "90" }, "0", "false", "false");
        row("upside down", "mirrorV", true, "0", "true", "false");
        row("upside down as text", "mirrorV", "true", "0", "true", "false");
        row("upside down no", "mirrorV", "false", "0", "false", "false");
        row("upside down no value", "mirrorV", QVariant(), "0", "false", "false");
        row("left to right", "mirrorH", true, "0", "false", "true"); // said, but not passed on
        row("left to right as number", "mirrorH", 1, "0", "false", "true");
    }

    void options_reachTheEncoderAsText()
    {
        QFETCH(QString, option);
        QFETCH(QVariant, value);
        QFETCH(QString, rotation);
        QFETCH(QString, mirrorV);
        QFETCH(QString, mirrorH);
        EncoderFixture f;
        QVideoEncoderSettings settings = h264();
        settings.setEncodingOption(option, value);
        f.start(settings);
        QVERIFY(f.encoder.encode(testPicture()));
        QCOMPARE(f.calls().mid(0, 3), (QStringList { "encoder 1: setParameter(2, " + rotation + ')',
                                                     "encoder 1: setParameter(4, " + mirrorV + ')',
                                                     "encoder 1: setParameter(1, variable)" }));
        QCOMPARE(f.messages.messages(),
                 QStringList("debug " + Encoding + "options: rotation=" + rotation +
                             " mirrorV=" + mirrorV + " mirrorH=" + mirrorH + " bitrate=variable"));
    }

    void mode_isConstantForOneEncodingModeOnly_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("text");
        QTest::newRow("quality") << int(QMultimedia::ConstantQualityEncoding) << "variable";
        QTest::newRow("constant") << int(QMultimedia::ConstantBitRateEncoding) << "constant";
        QTest::newRow("average") << int(QMultimedia::AverageBitRateEncoding) << "variable";
        QTest::newRow("two pass") << int(QMultimedia::TwoPassEncoding) << "variable";
    }

    void mode_isConstantForOneEncodingModeOnly()
    {
        QFETCH(int, mode);
        QFETCH(QString, text);
        EncoderFixture f;
        QVideoEncoderSettings settings = h264();
        settings.setEncodingMode(static_cast<QMultimedia::EncodingMode>(mode));
        f.start(settings);
        QVERIFY(f.encoder.encode(testPicture()));
        QCOMPARE(f.calls().at(2), "encoder 1: setParameter(1, " + text + ')');
        QVERIFY(f.messages.messages().last().endsWith("bitrate=" + text));
    }

    void unknownCodec_isLeftToTheEncoder()
    {
        EncoderFixture f;
        QVideoEncoderSettings settings = h264();
        settings.setCodec("video/x");
        f.start(settings);
        QVERIFY(f.encoder.encode(testPicture()));
        QCOMPARE(f.fake->config().codecType, 0);
        QCOMPARE(f.messages.messages().first(),
                 "warning " + Encoding + "Unknown encoder \"video/x\"");
    }

    void failedConfiguration_isTriedAgainWithTheNextPicture()
    {
        EncoderFixture f;
        f.start(h264());
        f.script->initializeFails = true;
        f.messages.clear();
        QVERIFY(!f.encoder.encode(testPicture()));
        QCOMPARE(f.encoder.status(), Starting);
        QCOMPARE(f.messages.messages("warning"),
                 QStringList("warning " + Encoding + "Coundn't start the encoder"));
        QVERIFY(!f.calls().contains("encoder 1: encode(0)"));
        f.script->initializeFails = false;
        QVERIFY(f.encoder.encode(testPicture(1, QVideoFrame::Format_NV12, QSize(32, 16))));
        QCOMPARE(f.encoder.status(), Active);
        QCOMPARE(f.fake->config().width, 32);
    }

    void encode_returnsWhatTheEncoderSays()
    {
        EncoderFixture f;
        f.start(h264());
        f.script->encodeFails = true;
        QVERIFY(!f.encoder.encode(testPicture(1)));
        QVERIFY(!f.encoder.encode(testPicture(2, QVideoFrame::Format_RGB32)));
        QCOMPARE(f.encoder.status(), Active);
        f.script->encodeFails = false;
        QVERIFY(f.encoder.encode(testPicture(3)));
        QCOMPARE(f.messages.messages("warning"), QStringList());
    }

    void keyFrame_isRequestedByMetaData_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<bool>("requested");
        QTest::newRow("none") << QVariant() << false;
        QTest::newRow("true") << QVariant(true) << true;
        QTest::newRow("false") << QVariant(false) << false;
        QTest::newRow("number") << QVariant(1) << true;
        QTest::newRow("text") << QVariant("true") << true;
    }

    void keyFrame_isRequestedByMetaData()
    {
        QFETCH(QVariant, value);
        QFETCH(bool, requested);
        for (const auto format : { QVideoFrame::Format_NV12, QVideoFrame::Format_RGB32 }) {
            EncoderFixture f;
            f.start(h264());
            QVideoFrame picture = testPicture(7, format);
            if (value.isValid())
                picture.setMetaData("KeyFrame", value);
            QVERIFY(f.encoder.encode(picture));
            const QString call = format == QVideoFrame::Format_NV12 ? "encode" : "encodeRGB";
            QCOMPARE(f.calls().last(), "encoder 1: " + call + (requested ? "(7, key)" : "(7)"));
            QCOMPARE(f.messages.messages().contains("debug " + Encoding + "Requesting key frame"),
                     requested);
        }
    }

    void onlyRgb32_takesTheRgbPath_data()
    {
        QTest::addColumn<int>("format");
        QTest::addColumn<bool>("rgb");
        QTest::newRow("RGB32") << int(QVideoFrame::Format_RGB32) << true;
        QTest::newRow("BGRA32") << int(QVideoFrame::Format_BGRA32) << false;
        QTest::newRow("ARGB32") << int(QVideoFrame::Format_ARGB32) << false;
        QTest::newRow("NV12") << int(QVideoFrame::Format_NV12) << false;
        QTest::newRow("YUV420P") << int(QVideoFrame::Format_YUV420P) << false;
    }

    void onlyRgb32_takesTheRgbPath()
    {
        QFETCH(int, format);
        QFETCH(bool, rgb);
        EncoderFixture f;
        f.start(h264());
        QVERIFY(f.encoder.encode(
                testPicture(5, static_cast<QVideoFrame::PixelFormat>(format), QSize(16, 8))));
        QCOMPARE(f.calls().last(),
                 QString(rgb ? "encoder 1: encodeRGB(5)" : "encoder 1: encode(5)"));
    }

    void stride_isThatOfTheMappedPicture()
    {
        EncoderFixture f;
        f.start(h264());
        QVideoFrame picture(96 * 48 * 3 / 2, QSize(64, 48), 96, QVideoFrame::Format_NV12);
        QCOMPARE(picture.bytesPerLine(), 0); // not known yet
        QVERIFY(f.encoder.encode(picture));
        QCOMPARE(f.fake->config().stride, 96);
        QCOMPARE(int(f.fake->picture().yStride), 96);
    }

    void picture_staysMappedAndAliveUntilTheEncoderDropsIt()
    {
        EncoderFixture f;
        f.start(h264());
        f.script->keepsPictures = true;
        const auto track = std::make_shared<BufferTrack>();
        QVERIFY(f.encoder.encode(trackedPicture(track, 9)));
        QCOMPARE(track->buffers.load(), 1);
        QCOMPARE(track->maps.load(), 1);
        QCOMPARE(track->unmaps.load(), 0);
        QVERIFY(f.fake->picture().y != nullptr);
        LibraryThread::run("FakeEncoder", [&f] { f.fake->dropPictures(); });
        QCOMPARE(track->unmaps.load(), 1);
        QCOMPARE(track->buffers.load(), 0);
    }

    void picture_isLetGoOnReturn_whenTheEncoderDoesNotKeepIt()
    {
        EncoderFixture f;
        f.start(h264());
        for (const bool fails : { false, true }) {
            f.script->encodeFails = fails;
            const auto track = std::make_shared<BufferTrack>();
            QCOMPARE(f.encoder.encode(trackedPicture(track)), !fails);
            QCOMPARE(track->maps.load(), 1);
            QCOMPARE(track->unmaps.load(), 1);
            QCOMPARE(track->buffers.load(), 0);
        }
    }

    void pictureThatDoesNotMap_goesInWithoutPlanes()
    {
        EncoderFixture f;
        f.start(h264());
        const auto track = std::make_shared<BufferTrack>();
        auto *buffer = new TrackedBuffer(track, 64 * 48 * 3 / 2, 64);
        buffer->mapFails = true;
        QVERIFY(f.encoder.encode(QVideoFrame(buffer, QSize(64, 48), QVideoFrame::Format_NV12)));
        QCOMPARE(f.fake->config().stride, 0);
        QCOMPARE(f.fake->picture().y, nullptr);
        QCOMPARE(f.fake->picture().cb, nullptr);
        QCOMPARE(f.fake->picture().cr, nullptr);
        QCOMPARE(track->unmaps.load(), 0);
        QCOMPARE(f.messages.messages("warning"), QStringList());
        QVERIFY(f.encoder.encode(QVideoFrame())); // no picture at all
        QCOMPARE(f.fake->picture().y, nullptr);
        QCOMPARE(int(f.fake->picture().width), 65535); // -1, cut
    }

    void changeSettings_belowStarting_isRefused()
    {
        EncoderFixture f;
        QVERIFY(!f.encoder.changeSettings(h264(1)));
        QVERIFY(f.encoder.load(f.fake));
        QVERIFY(!f.encoder.changeSettings(h264(1)));
        QVERIFY(f.encoder.start(h264(2)));
        QVERIFY(f.encoder.encode(testPicture()));
        QCOMPARE(f.fake->config().bitrate, 2);
    }

    void changeSettings_whileStarting_isForTheFirstPicture()
    {
        EncoderFixture f;
        f.start(h264(1000));
        QVERIFY(f.encoder.changeSettings(h264(2000)));
        QCOMPARE(f.calls(), QStringList());
        QVERIFY(f.encoder.encode(testPicture()));
        QCOMPARE(f.fake->config().bitrate, 2000);
    }

    void changeSettings_whileActive_changesTheBitRateOnly()
    {
        EncoderFixture f;
        f.start(h264(1000));
        QVERIFY(f.encoder.encode(testPicture()));
        CallLog::instance().clear();
        QVideoEncoderSettings settings = h264(3000);
        settings.setFrameRate(10);
        settings.setCodec("video/vp8");
        settings.setEncodingOption("rotate", 90);
        QVERIFY(f.encoder.changeSettings(settings));
        QCOMPARE(f.calls(), QStringList { "encoder 1: setBitrate(3000)" });
        QCOMPARE(f.encoder.status(), Active);
    }

    void flushAndDrain_releaseTheEncoderByWayOfStopping_data()
    {
        QTest::addColumn<bool>("flush");
        QTest::addColumn<bool>("active");
        QTest::newRow("flush, starting") << true << false;
        QTest::newRow("flush, active") << true << true;
        QTest::newRow("drain, starting") << false << false;
        QTest::newRow("drain, active") << false << true;
    }

    void flushAndDrain_releaseTheEncoderByWayOfStopping()
    {
        QFETCH(bool, flush);
        QFETCH(bool, active);
        EncoderFixture f;
        f.start(h264());
        if (active)
            QVERIFY(f.encoder.encode(testPicture()));
        CallLog::instance().clear();
        f.statuses.clear();
        f.fake.reset();
        connect(&f.encoder, &OcelleEncoder::statusChanged, [](QPVEncoder::Status status) {
            CallLog::instance().add("test", QString::number(status));
        });
        flush ? f.encoder.flush() : f.encoder.drain();
        QCOMPARE(f.statuses, (Statuses { Stopping, Unloaded }));
        QCOMPARE(f.calls(), (QStringList { "test: 4", "encoder 1: destroyed", "test: 1" }));
        QCOMPARE(f.encoder.status(), Unloaded);
    }

    void flushAndDrain_doNothingUpToLoaded()
    {
        EncoderFixture f;
        f.encoder.flush();
        f.encoder.drain();
        QVERIFY(f.encoder.load(f.fake));
        f.encoder.flush();
        f.encoder.drain();
        QCOMPARE(f.encoder.status(), Loaded);
        QCOMPARE(f.statuses, Statuses { Loaded });
        QCOMPARE(f.fake.use_count(), 2L);
    }

    void setStatus_tellsOnlyOfChanges()
    {
        EncoderFixture f;
        f.encoder.setStatus(Active);
        f.encoder.setStatus(Active);
        f.encoder.setStatus(Unloaded);
        QCOMPARE(f.statuses, (Statuses { Active, Unloaded }));
    }

    void destruction_releasesTheEncoderInAnyStatus()
    {
        for (int steps = 0; steps < 3; ++steps) {
            const auto script = std::make_shared<FakeEncoderScript>();
            const auto fake = std::make_shared<FakeVideoEncoder>(1, script);
            {
                OcelleEncoder encoder(nullptr);
                QVERIFY(encoder.load(fake));
                QVERIFY(steps < 1 || encoder.start(h264()));
                QVERIFY(steps < 2 || encoder.encode(testPicture()));
            }
            QCOMPARE(fake.use_count(), 1L);
        }
    }
};

QTEST_GUILESS_MAIN(TestEncoder)
#include "tst_ocelleencoder.moc"
