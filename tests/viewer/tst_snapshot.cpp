// SPDX-License-Identifier: BSD-3-Clause
#include "homefolder.h"
#include "streamingcamera.h"

#include <QDir>
#include <QImage>
#include <QSignalSpy>
#include <QTest>

#include <patternreader.h>
#include <snapshot.h>

#include <memory>

using Viewer::RawPictures;
using Viewer::Snapshot;

class TestSnapshot : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void picture_isSaved_inFullSize_andNotMirrored();
    void pictures_takenInTheSameSecond_areAllKept();
    void take_withoutCamera_isToldOf();
    void take_ofSilentCamera_isToldOf();
    void take_withoutFolder_isToldOf();
    void take_ofSourceThatGoes_isToldOf();
    void take_ofSourceThatIsReplaced_isToldOf();

private:
    HomeFolder m_home;
};

void TestSnapshot::init()
{
    m_home.clear();
}

void TestSnapshot::picture_isSaved_inFullSize_andNotMirrored()
{
    StreamingCamera camera("pattern:front");
    camera.camera()->start();
    RawPictures source;
    source.setCamera(camera.item());
    Snapshot snapshot;
    snapshot.setProperty("source", QVariant::fromValue(&source));
    QSignalSpy saved(&snapshot, &Snapshot::saved);
    snapshot.take();
    QVERIFY(snapshot.isBusy());
    QTRY_COMPARE(saved.count(), 1);
    QVERIFY(!snapshot.isBusy());

    const QString file = saved.first().first().toString();
    QCOMPARE(HomeFolder::files(m_home.pictures(), QStringLiteral(".png")), QStringList({ file }));
    QTRY_VERIFY(camera.surface()->pictures > 0);
    const QImage image = QImage(file).convertToFormat(QImage::Format_RGB32);
    QCOMPARE(image.size(), camera.surface()->last.size());
    const auto reading = Veltra::Ocelle::readPatternRgb32(image.constBits(), image.bytesPerLine(),
                                                          image.width(), image.height());
    QVERIFY(reading);
    QVERIFY(!reading->mirrored);
}

void TestSnapshot::pictures_takenInTheSameSecond_areAllKept()
{
    StreamingCamera camera("pattern:back");
    camera.camera()->start();
    RawPictures source;
    source.setCamera(camera.item());
    Snapshot snapshot;
    snapshot.setProperty("source", QVariant::fromValue(&source));
    QSignalSpy saved(&snapshot, &Snapshot::saved);
    for (int taken = 1; taken <= 3; ++taken) {
        snapshot.take();
        QTRY_COMPARE(saved.count(), taken);
    }
    QCOMPARE(HomeFolder::files(m_home.pictures(), QStringLiteral(".png")).size(), 3);
}

void TestSnapshot::take_withoutCamera_isToldOf()
{
    RawPictures none;
    Snapshot snapshot;
    snapshot.setProperty("source", QVariant::fromValue(&none));
    QSignalSpy failed(&snapshot, &Snapshot::failed);
    snapshot.take();
    QCOMPARE(failed.count(), 1);
    QCOMPARE(failed.first().first().toString(),
             QStringLiteral("The picture was not saved: there is no camera to take it with."));
    QVERIFY(!snapshot.isBusy());
}

void TestSnapshot::take_ofSilentCamera_isToldOf()
{
    StreamingCamera camera("pattern:back");
    camera.camera()->load();
    RawPictures source;
    source.setCamera(camera.item());
    Snapshot snapshot;
    snapshot.setProperty("source", QVariant::fromValue(&source));
    QSignalSpy failed(&snapshot, &Snapshot::failed);
    snapshot.take();
    QTRY_COMPARE(failed.count(), 1);
    QCOMPARE(failed.first().first().toString(),
             QStringLiteral("The picture was not saved: the camera has delivered no picture."));
}

void TestSnapshot::take_withoutFolder_isToldOf()
{
    QFile inTheWay(m_home.pictures());
    QVERIFY(inTheWay.open(QFile::WriteOnly));
    StreamingCamera camera("pattern:back");
    camera.camera()->start();
    RawPictures source;
    source.setCamera(camera.item());
    Snapshot snapshot;
    snapshot.setProperty("source", QVariant::fromValue(&source));
    QSignalSpy failed(&snapshot, &Snapshot::failed);
    snapshot.take();
    QTRY_COMPARE(failed.count(), 1);
    QVERIFY(failed.first().first().toString().contains(QStringLiteral("cannot be made")));
}

void TestSnapshot::take_ofSourceThatGoes_isToldOf()
{
    StreamingCamera camera("pattern:back");
    camera.camera()->load();
    auto source = std::make_unique<RawPictures>();
    source->setCamera(camera.item());
    Snapshot snapshot;
    snapshot.setSource(source.get());
    QSignalSpy failed(&snapshot, &Snapshot::failed);
    snapshot.take();
    source.reset();
    QVERIFY(snapshot.isBusy());
    QTRY_COMPARE(failed.count(), 1);
    QVERIFY(!snapshot.isBusy());
}

void TestSnapshot::take_ofSourceThatIsReplaced_isToldOf()
{
    StreamingCamera camera("pattern:back");
    camera.camera()->load();
    RawPictures source;
    source.setCamera(camera.item());
    RawPictures other;
    Snapshot snapshot;
    snapshot.setSource(&source);
    QSignalSpy failed(&snapshot, &Snapshot::failed);
    snapshot.take();
    snapshot.setSource(&other);
    QCOMPARE(failed.count(), 1);
    QVERIFY(!snapshot.isBusy());
    QCOMPARE(snapshot.source(), &other);
}

QTEST_GUILESS_MAIN(TestSnapshot)
#include "tst_snapshot.moc"
