// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "encoderfixture.h"
#include "librarythread.h"
#include "testpicture.h"

#include <QVideoFrame>
#include <QtTest>

#include <memory>

using namespace Statuses;

namespace {

const QString Encoding("veltra.palaver.encoder.ocelle: ");

} // namespace

/*! What an encoder is handed of a picture, and for how long. */
class TestEncoderPictures : public QObject
{
    Q_OBJECT
private slots:
    void encode_belowStarting_isRefusedInSilence()
    {
        EncoderFixture f;
        QVERIFY(!f.encoder.encode(testPicture()));
        QVERIFY(f.encoder.load(f.fake));
        QVERIFY(!f.encoder.encode(testPicture()));
        QCOMPARE(f.calls(), QStringList());
        QCOMPARE(f.messages.messages(), QStringList());
    }

    void encode_returnsWhatTheEncoderSays()
    {
        EncoderFixture f;
        f.start(h264Settings());
        f.script->encodeFails = true;
        QVERIFY(!f.encoder.encode(testPicture(1)));
        QVERIFY(!f.encoder.encode(testPicture(2, QVideoFrame::Format_RGB32)));
        QCOMPARE(int(f.encoder.status()), Active);
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
            f.start(h264Settings());
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
        f.start(h264Settings());
        QVERIFY(f.encoder.encode(
                testPicture(5, static_cast<QVideoFrame::PixelFormat>(format), QSize(16, 8))));
        QCOMPARE(f.calls().last(),
                 QString(rgb ? "encoder 1: encodeRGB(5)" : "encoder 1: encode(5)"));
    }

    void picture_staysMappedAndAliveUntilTheEncoderDropsIt()
    {
        EncoderFixture f;
        f.start(h264Settings());
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
        f.start(h264Settings());
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
        f.start(h264Settings());
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
};

QTEST_GUILESS_MAIN(TestEncoderPictures)
#include "tst_ocelleencoderpictures.moc"
