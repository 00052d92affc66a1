// SPDX-License-Identifier: BSD-3-Clause
#include "compliance/check.h"
#include "compliance/reports.h"
#include "compliance/runner.h"
#include "doubleplatform.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QXmlStreamReader>
#include <QtTest>

using namespace Compliance;

Q_DECLARE_METATYPE(Fault)

namespace {

Options quickOptions()
{
    Options options;
    options.hotPlug = 1;
    options.patience = { 2000, 1000, 40, 60 };
    return options;
}

QStringList checksOf(const std::vector<Result> &results, Outcome::Kind kind)
{
    QStringList names;
    for (const Result &result : results) {
        if (result.outcome.kind == kind && !names.contains(result.check))
            names.append(result.check);
    }
    return names;
}

QStringList reasonsOf(const std::vector<Result> &results)
{
    QStringList reasons;
    for (const Result &result : results) {
        if (result.outcome.kind != Outcome::Kind::Pass)
            reasons.append(toText(result));
    }
    return reasons;
}

struct FaultRow
{
    const char *name;
    Fault fault;
    QStringList failing; // checks; more than one where one fault is the business of several
};

const QList<FaultRow> &faultRows()
{
    static const QList<FaultRow> rows {
        { "manager hangs", Fault::ManagerHangs, { "platform.discovery" } },
        { "listing shuffles", Fault::ListingShuffles, { "cameras.listing" } },
        { "listing is open", Fault::ListingIsOpen, { "cameras.listing" } },
        { "unknown id opens", Fault::UnknownIdOpens, { "cameras.unknown" } },
        { "hot-plug is silent", Fault::HotPlugIsSilent, { "cameras.hotplug" } },
        { "hot-plug is not listed", Fault::HotPlugIsNotListed, { "cameras.hotplug" } },
        { "camera tells other id", Fault::CameraTellsOtherId, { "camera.open" } },
        { "camera has no format", Fault::CameraHasNoFormat, { "camera.open" } },
        { "camera wrong size", Fault::CameraWrongSize, { "camera.settings" } },
        { "camera wrong rate", Fault::CameraWrongRate, { "camera.settings" } },
        { "camera refuses setting", Fault::CameraRefusesSetting, { "camera.settings" } },
        { "camera tires", Fault::CameraTires, { "camera.restart" } },
        { "camera stays started", Fault::CameraStaysStarted, { "camera.restart" } },
        { "camera delivers late", Fault::CameraDeliversLate, { "camera.silence" } },
        { "camera keeps listener", Fault::CameraKeepsListener, { "camera.silence" } },
        { "camera yields", Fault::CameraYields, { "camera.second" } },
        { "camera hangs", Fault::CameraHangs, { "camera.settings" } }, // the first that stops one
        { "camera throws",
          Fault::CameraThrows, // whatever starts a camera
          { "camera.settings", "camera.restart", "camera.silence", "camera.second" } },
        { "camera throws later",
          Fault::CameraThrowsLater, // whatever stops one
          { "camera.settings", "camera.restart", "camera.silence", "camera.second" } },
        { "listing counts too many", Fault::ListingCountsTooMany, { "cameras.listing" } },
        { "codecs shuffle", Fault::CodecsShuffle, { "codecs.listing" } },
        { "codec is nameless", Fault::CodecIsNameless, { "codecs.listing" } },
        { "others are promised", Fault::OthersArePromised, { "codecs.others" } },
        { "others are given", Fault::OthersAreGiven, { "codecs.others" } },
        { "encoder is denied", Fault::EncoderIsDenied, { "encoder.supported" } },
        { "encoder repeats", Fault::EncoderRepeats, { "encoder.roundtrip" } },
        { "encoder skips keys", Fault::EncoderSkipsKeys, { "encoder.keyframe" } },
        { "encoder makes keys only", Fault::EncoderMakesKeysOnly, { "encoder.keyframe" } },
        { "encoder mislabels keys", Fault::EncoderMislabelsKeys, { "encoder.keyframe" } },
        { "encoder keeps bit rate", Fault::EncoderKeepsBitRate, { "encoder.bitrate" } },
        { "encoder ignores turn", Fault::EncoderIgnoresTurn, { "encoder.parameters" } },
        { "encoder ignores mirror", Fault::EncoderIgnoresMirror, { "encoder.parameters" } },
        { "encoder keeps listener", Fault::EncoderKeepsListener, { "encoder.silence" } },
        { "encoder keeps picture", Fault::EncoderKeepsPicture, { "encoder.release" } },
        { "encoders are fewer", Fault::EncodersAreFewer, { "encoder.instances" } },
        { "encoder rounds stamps", Fault::EncoderRoundsStamps, { "encoder.timestamps" } },
        { "encoder takes no size", Fault::EncoderTakesNoSize, { "encoder.badinput" } },
        { "encoder takes anything", Fault::EncoderTakesAnything, { "encoder.badinput" } },
        { "encoder breaks", Fault::EncoderBreaks, { "encoder.badinput" } },
        { "encoder throws",
          Fault::EncoderThrows, // whatever makes one, also for a stream to decode
          { "encoder.supported", "encoder.roundtrip", "encoder.rgb", "encoder.keyframe",
            "encoder.bitrate", "encoder.parameters", "encoder.silence", "encoder.release",
            "encoder.instances", "encoder.timestamps", "encoder.badinput", "decoder.drain",
            "decoder.flush", "decoder.silence", "decoder.release", "decoder.timestamps",
            "decoder.badinput" } },
        { "RGB is refused", Fault::RgbIsRefused, { "encoder.rgb" } },
        { "RGB is swapped", Fault::RgbIsSwapped, { "encoder.rgb" } },
        { "RGB is lost", Fault::RgbIsLost, { "encoder.rgb" } },
        { "RGB is kept", Fault::RgbIsKept, { "encoder.rgb" } },
        { "RGB has no time", Fault::RgbHasNoTime, { "encoder.rgb" } },
        { "RGB skips keys", Fault::RgbSkipsKeys, { "encoder.rgb" } },
        { "decoder is denied", Fault::DecoderIsDenied, { "decoder.supported" } },
        { "decoder repeats", Fault::DecoderRepeats, { "encoder.roundtrip", "encoder.rgb" } },
        { "decoder loses in drain",
          Fault::DecoderDrainLoses,
          { "encoder.roundtrip", "encoder.rgb", "decoder.drain", "decoder.timestamps",
            "decoder.badinput" } },
        { "decoder puts out in flush", Fault::DecoderFlushPutsOut, { "decoder.flush" } },
        { "decoder keeps listener", Fault::DecoderKeepsListener, { "decoder.silence" } },
        { "decoder releases twice", Fault::DecoderReleasesTwice, { "decoder.release" } },
        { "decoder keeps block", Fault::DecoderKeepsBlock, { "decoder.release" } },
        { "decoder keeps refused", Fault::DecoderKeepsRefused, { "decoder.release" } },
        { "decoders are fewer", Fault::DecodersAreFewer, { "decoder.instances" } },
        { "decoder rounds stamps", Fault::DecoderRoundsStamps, { "decoder.timestamps" } },
        { "decoder takes others", Fault::DecoderTakesOthers, { "decoder.badinput" } },
        { "decoder is silent", Fault::DecoderIsSilent, { "decoder.badinput" } },
        { "decoder shows garbage", Fault::DecoderShowsGarbage, { "decoder.badinput" } },
        { "decoder breaks", Fault::DecoderBreaks, { "decoder.badinput" } },
        { "decoder loses good frames", Fault::DecoderLosesGood, { "decoder.badinput" } },
        { "decoder stays lost", Fault::DecoderStaysLost, { "decoder.badinput" } },
        { "decoder drops what is inside", Fault::DecoderDropsInside, { "decoder.badinput" } },
        { "decoder throws",
          Fault::DecoderThrows, // whatever starts one
          { "encoder.roundtrip", "encoder.rgb", "encoder.keyframe", "encoder.parameters",
            "decoder.supported", "decoder.drain", "decoder.flush", "decoder.silence",
            "decoder.release", "decoder.instances", "decoder.timestamps", "decoder.badinput" } },
    };
    return rows;
}

bool isHang(Fault fault)
{
    return fault == Fault::ManagerHangs || fault == Fault::CameraHangs;
}

} // namespace

/*! The checks, on a double of the platform that can break the contract in one way at a time. */
class ComplianceTest : public QObject
{
    Q_OBJECT
private slots:
    void everyCheckPasses_whenTheContractIsKept();
    void checkFails_whenTheContractIsBroken_data();
    void checkFails_whenTheContractIsBroken();
    void everyCheck_isFailedByAFault();
    void hangingCall_isNamedAndSkipsTheRest_data();
    void hangingCall_isNamedAndSkipsTheRest();
    void limitlessInstances_areTriedUpToABound();
    void decoder_mayWaitForAKeyFrame_afterBadInput();
    void rgbPictures_areChecked_withoutADecoder();
    void onlyAndDevice_chooseChecks();
    void reports_tellEveryResult();
};

void ComplianceTest::everyCheckPasses_whenTheContractIsKept()
{
    DoublePlatform platform(Fault::None);
    Runner runner(quickOptions());
    int told = 0;
    const std::vector<Result> results = runner.run([&told](const Result &) { ++told; });
    QCOMPARE(told, int(results.size()));
    QCOMPARE(reasonsOf(results), QStringList());
    QCOMPARE(checksOf(results, Outcome::Kind::Pass).size(), int(allChecks().size()) + 1);
    QVERIFY(!runner.isStuck());
}

void ComplianceTest::checkFails_whenTheContractIsBroken_data()
{
    QTest::addColumn<Fault>("fault");
    QTest::addColumn<QStringList>("failing");
    for (const FaultRow &row : faultRows())
        QTest::newRow(row.name) << row.fault << row.failing;
}

void ComplianceTest::checkFails_whenTheContractIsBroken()
{
    QFETCH(Fault, fault);
    QFETCH(QStringList, failing);
    DoublePlatform platform(fault);
    Runner runner(quickOptions());
    const std::vector<Result> results = runner.run([](const Result &) {});
    platform.letGo();
    const QByteArray reasons = reasonsOf(results).join(QLatin1Char('\n')).toUtf8();
    QVERIFY2(checksOf(results, Outcome::Kind::Fail) == failing, reasons);
    if (!isHang(fault))
        QVERIFY2(checksOf(results, Outcome::Kind::Skip).isEmpty(), reasons);
    for (const Result &result : results)
        QVERIFY(result.outcome.kind == Outcome::Kind::Pass || !result.outcome.reason.isEmpty());
}

void ComplianceTest::everyCheck_isFailedByAFault()
{
    QStringList failed;
    for (const FaultRow &row : faultRows())
        failed.append(row.failing);
    for (const Check &check : allChecks())
        QVERIFY2(failed.contains(QLatin1String(check.name)), check.name);
}

void ComplianceTest::hangingCall_isNamedAndSkipsTheRest_data()
{
    QTest::addColumn<Fault>("fault");
    QTest::addColumn<QString>("reason");
    QTest::newRow("at once") << Fault::ManagerHangs
                             << "getNumberOfCameras() did not return within 2 s";
    QTest::newRow("later on") << Fault::CameraHangs << "stopCapture() did not return within 2 s";
}

void ComplianceTest::hangingCall_isNamedAndSkipsTheRest()
{
    QFETCH(Fault, fault);
    DoublePlatform platform(fault);
    Runner runner(quickOptions());
    const std::vector<Result> results = runner.run([](const Result &) {});
    platform.letGo();
    QVERIFY(runner.isStuck());
    const auto failed = std::find_if(results.begin(), results.end(), [](const Result &result) {
        return result.outcome.kind == Outcome::Kind::Fail;
    });
    QVERIFY(failed != results.end());
    QTEST(failed->outcome.reason, "reason");
    QVERIFY(failed + 1 != results.end());
    QVERIFY(std::all_of(failed + 1, results.end(), [](const Result &result) {
        return result.outcome.kind == Outcome::Kind::Skip;
    }));
    const QString last = QLatin1String(allChecks().back().name);
    QCOMPARE(results.back().check, last);
}

void ComplianceTest::limitlessInstances_areTriedUpToABound()
{
    DoublePlatform platform(Fault::CodecsAreLimitless);
    Options options = quickOptions();
    options.only = QStringLiteral("*.instances");
    Runner runner(options);
    const std::vector<Result> results = runner.run([](const Result &) {});
    QCOMPARE(results.size(), std::size_t(5)); // with discovery
    for (auto result = results.begin() + 1; result != results.end(); ++result) {
        QVERIFY2(result->outcome.kind == Outcome::Kind::Pass, qPrintable(toText(*result)));
        QCOMPARE(result->outcome.reason, QStringLiteral("at once: 64 of 2147483647 tried"));
    }
}

void ComplianceTest::decoder_mayWaitForAKeyFrame_afterBadInput()
{
    DoublePlatform platform(Fault::DecoderAwaitsKey);
    Options options = quickOptions();
    options.only = QStringLiteral("decoder.*");
    Runner runner(options);
    const std::vector<Result> results = runner.run([](const Result &) {});
    QVERIFY(checksOf(results, Outcome::Kind::Pass).contains(QStringLiteral("decoder.badinput")));
    QCOMPARE(reasonsOf(results), QStringList());
}

void ComplianceTest::rgbPictures_areChecked_withoutADecoder()
{
    DoublePlatform platform(Fault::DecodersAreMissing);
    Options options = quickOptions();
    options.only = QStringLiteral("encoder.rgb");
    Runner runner(options);
    const std::vector<Result> results = runner.run([](const Result &) {});
    QCOMPARE(results.size(), std::size_t(3)); // with discovery
    for (auto result = results.begin() + 1; result != results.end(); ++result) {
        QVERIFY2(result->outcome.kind == Outcome::Kind::Pass, qPrintable(toText(*result)));
        QCOMPARE(result->outcome.reason,
                 QStringLiteral("pictures: 12, whose colours no decoder shows"));
    }
}

void ComplianceTest::onlyAndDevice_chooseChecks()
{
    DoublePlatform platform(Fault::None);
    Options options = quickOptions();
    options.only = QStringLiteral("*.open");
    options.device = QStringLiteral("t?o");
    Runner runner(options);
    const std::vector<Result> results = runner.run([](const Result &) {});
    QCOMPARE(results.size(), std::size_t(2)); // discovery is always there
    QCOMPARE(results.back().check, QStringLiteral("camera.open"));
    QCOMPARE(results.back().device, QStringLiteral("two"));
    QCOMPARE(runner.wrongChoice(), QString());

    options.device = QStringLiteral("nobody");
    Runner other(options);
    QCOMPARE(other.run([](const Result &) {}).size(), std::size_t(0));
    QVERIFY(other.wrongChoice().contains(QLatin1String("no device \"nobody\"")));

    options.device = QStringLiteral("h264.encoder");
    Runner apart(options);
    QCOMPARE(apart.run([](const Result &) {}).size(), std::size_t(0));
    QVERIFY(apart.wrongChoice().contains(QLatin1String("no check \"*.open\"")));
}

void ComplianceTest::reports_tellEveryResult()
{
    const QString odd = QStringLiteral("a <b> & \"c\"\x01");
    const std::vector<Result> results {
        { "one.check", "purpose", "cam", Outcome::pass(), 0.25 },
        { "two.check", "purpose", QString(), Outcome::fail(odd), 1 },
        { "three.check", "purpose", QStringLiteral("x\ny"), Outcome::skip("later"), 0 },
    };
    QXmlStreamReader xml(toJUnit(results));
    QStringList elements;
    QStringList messages;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        elements.append(xml.name().toString());
        messages.append(xml.attributes().value(QStringLiteral("message")).toString());
    }
    QVERIFY2(!xml.hasError(), qPrintable(xml.errorString()));
    QCOMPARE(elements, (QStringList { "testsuite", "testcase", "testcase", "failure", "testcase",
                                      "skipped" }));
    QCOMPARE(messages.at(3), QStringLiteral("a <b> & \"c\"?"));

    const QJsonObject json = toJson(results).object();
    QCOMPARE(json.value(QStringLiteral("failed")).toInt(), 1);
    const QJsonArray checks = json.value(QStringLiteral("checks")).toArray();
    QCOMPARE(checks.size(), 3);
    QCOMPARE(checks.at(1).toObject().value(QStringLiteral("reason")).toString(), odd);

    QCOMPARE(toText(results.at(2)), QStringLiteral("skip  three.check         x?y  later"));
    QCOMPARE(summary(results), QStringLiteral("3 checks: 1 passed, 1 failed, 1 skipped"));
}

QTEST_GUILESS_MAIN(ComplianceTest)
#include "tst_compliance.moc"
