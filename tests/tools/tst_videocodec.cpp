// SPDX-License-Identifier: BSD-3-Clause
#include "videocodec.h"

#include <QtTest>

using namespace Tool;

class VideoCodecTest : public QObject
{
    Q_OBJECT
private slots:
    void codec_isFoundByItsName();
    void container_isFoundByTheFilesName_data();
    void container_isFoundByTheFilesName();
    void codec_isTheContainersUsualOne_unlessOneIsWanted();
    void codec_isRefused_whereTheContainerCannotHoldIt_data();
    void codec_isRefused_whereTheContainerCannotHoldIt();
};

void VideoCodecTest::codec_isFoundByItsName()
{
    QCOMPARE(codecNames().size(), 4);
    for (const QString &name : codecNames()) {
        const auto codec = codecNamed(name);
        QVERIFY(codec.has_value());
        QCOMPARE(codecName(*codec), name);
        QCOMPARE(mimeType(*codec), QStringLiteral("video/") + name);
    }
    QVERIFY(!codecNamed(QStringLiteral("mpeg")));
    QVERIFY(!codecNamed(QString()));
}

void VideoCodecTest::container_isFoundByTheFilesName_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("name"); // empty for none
    QTest::newRow("mkv") << "a.mkv"
                         << "Matroska";
    QTest::newRow("mp4") << "/tmp/a b.mp4"
                         << "MP4";
    QTest::newRow("webm") << "a.b.webm"
                          << "WebM";
    QTest::newRow("ivf") << "a.ivf"
                         << "IVF";
    QTest::newRow("capitals") << "A.MKV"
                              << "Matroska";
    QTest::newRow("other") << "a.avi"
                           << "";
    QTest::newRow("none") << "mkv"
                          << "";
}

void VideoCodecTest::container_isFoundByTheFilesName()
{
    QFETCH(QString, file);
    QFETCH(QString, name);
    const auto container = containerOf(file);
    QCOMPARE(container.has_value(), !name.isEmpty());
    if (container)
        QCOMPARE(container->name, name);
}

void VideoCodecTest::codec_isTheContainersUsualOne_unlessOneIsWanted()
{
    QString error;
    const auto container = containerOf(QStringLiteral("a.webm")).value();
    QVERIFY(chooseCodec(container, std::nullopt, &error) == VideoCodec::VP8);
    QVERIFY(chooseCodec(container, VideoCodec::VP9, &error) == VideoCodec::VP9);
    QCOMPARE(error, QString());
}

void VideoCodecTest::codec_isRefused_whereTheContainerCannotHoldIt_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("codec");
    QTest::addColumn<QString>("error");
    QTest::newRow("webm") << "a.webm"
                          << "h264"
                          << "WebM files cannot hold h264, only vp8 and vp9";
    QTest::newRow("ivf") << "a.ivf"
                         << "h265"
                         << "IVF files cannot hold h265, only vp8 and vp9";
    QTest::newRow("mp4") << "a.mp4"
                         << "vp8"
                         << "MP4 files cannot hold vp8, only h264, h265 and vp9";
}

void VideoCodecTest::codec_isRefused_whereTheContainerCannotHoldIt()
{
    QFETCH(QString, file);
    QFETCH(QString, codec);
    QString error;
    QVERIFY(!chooseCodec(*containerOf(file), codecNamed(codec), &error));
    QTEST(error, "error");
}

QTEST_GUILESS_MAIN(VideoCodecTest)
#include "tst_videocodec.moc"
