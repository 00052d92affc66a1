// SPDX-License-Identifier: BSD-3-Clause
#include "decodefeeder.h"
#include "decodinglistener.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QtTest>

using namespace Veltra::Ocelle;

Q_DECLARE_METATYPE(Veltra::Ocelle::CodecType)

namespace {
const char MediaDir[] = OCELLE_MEDIA_DIR;

void addPlanes(QCryptographicHash *hash, const RawPicture &picture)
{
    for (const auto *plane : { &picture.y, &picture.cb, &picture.cr })
        hash->addData(reinterpret_cast<const char *>(plane->data()), int(plane->size()));
}

QStringList linesOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromLatin1(file.readAll()).split('\n', Qt::SkipEmptyParts);
}

// File name to hash.
QMap<QString, QString> publishedH264()
{
    QMap<QString, QString> hashes;
    for (const QString &line : linesOf(QString(MediaDir) + "/h264/SHA1SUMS")) {
        const QStringList words = line.simplified().split(' ');
        if (words.size() == 2)
            hashes.insert(QString(words[1]).remove('*'), words[0]);
    }
    return hashes;
}

QStringList publishedVp8()
{
    return QDir(QString(MediaDir) + "/vp8").entryList({ "*.ivf" });
}

// Each stream with both kinds of threads and both ways out.
void addRows(const QStringList &files)
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<bool>("hasDelay");
    QTest::addColumn<bool>("usesFrames");
    for (const QString &file : files) {
        QTest::newRow(qPrintable(file)) << file << false << false;
        QTest::newRow(qPrintable(file + ", throughput")) << file << true << true;
    }
}
} // namespace

class TestPublishedStreams : public QObject
{
    Q_OBJECT
private slots:
    void h264_isBitExact_data() { addRows(publishedH264().keys()); }
    void h264_isBitExact()
    {
        if (publishedH264().isEmpty())
            QSKIP("There are no H.264 streams in " OCELLE_MEDIA_DIR);
        QFETCH(QString, file);
        QFETCH(bool, hasDelay);
        QFETCH(bool, usesFrames);
        QCryptographicHash hash(QCryptographicHash::Sha1);
        DecodingListener listener;
        listener.onView = [&hash](const RawPicture &picture) { addPlanes(&hash, picture); };
        const auto decoder = softwareDecoder({ CodecType::H264, usesFrames, hasDelay }, &listener);
        QVERIFY(decoder);
        DecodeFeeder feeder(decoder);
        const auto units = readUnits(QString("%1/h264/%2").arg(MediaDir, file).toStdString());
        QVERIFY(!units.empty());
        for (const MediaUnit &unit : units)
            QVERIFY(feeder.decode(unit.data, std::uint64_t(unit.number)));
        decoder->drain();
        QVERIFY2(listener.errors.empty(), listener.firstError());
        QCOMPARE(QString(hash.result().toHex()), publishedH264().value(file));
        QVERIFY(feeder.isAllReleasedOnce());
    }

    void vp8_isBitExact_data() { addRows(publishedVp8()); }
    void vp8_isBitExact()
    {
        if (publishedVp8().isEmpty())
            QSKIP("There are no VP8 streams in " OCELLE_MEDIA_DIR);
        QFETCH(QString, file);
        QFETCH(bool, hasDelay);
        QFETCH(bool, usesFrames);
        QStringList hashes;
        DecodingListener listener;
        listener.onView = [&hashes](const RawPicture &picture) {
            QCryptographicHash hash(QCryptographicHash::Md5);
            addPlanes(&hash, picture);
            hashes.append(hash.result().toHex());
        };
        const auto decoder = softwareDecoder({ CodecType::VP8, usesFrames, hasDelay }, &listener);
        QVERIFY(decoder);
        DecodeFeeder feeder(decoder);
        const QString path = QString("%1/vp8/%2").arg(MediaDir, file);
        for (const MediaUnit &unit : readUnits(path.toStdString()))
            QVERIFY(feeder.decode(unit.data, std::uint64_t(unit.number)));
        decoder->drain();
        QVERIFY2(listener.errors.empty(), listener.firstError());
        QStringList published;
        for (const QString &line : linesOf(path + ".md5"))
            published.append(line.simplified().section(' ', 0, 0));
        QVERIFY(!published.isEmpty());
        QCOMPARE(hashes, published);
        QVERIFY(feeder.isAllReleasedOnce());
    }

    void lostPictures_areToldOfOnce_andDecodingGoesOn()
    {
        const auto units = readUnits(std::string(MediaDir) + "/h264/BA_MW_D_P_LOST.264");
        if (units.empty())
            QSKIP("There is no stream with lost pictures in " OCELLE_MEDIA_DIR);
        DecodingListener listener;
        listener.keepsPictures = false;
        const auto decoder = softwareDecoder({ CodecType::H264 }, &listener);
        DecodeFeeder feeder(decoder);
        for (const MediaUnit &unit : units)
            QVERIFY(feeder.decode(unit.data, std::uint64_t(unit.number)));
        decoder->drain();
        QCOMPARE(listener.pictures, int(units.size()));
        QCOMPARE(int(listener.errors.size()), 1);
        QVERIFY2(listener.errors[0].find("pictures are missing") != std::string::npos,
                 listener.firstError());
        QVERIFY(feeder.isAllReleasedOnce());
    }
};

QTEST_GUILESS_MAIN(TestPublishedStreams)
#include "tst_publishedstreams.moc"
