// SPDX-License-Identifier: BSD-3-Clause
#include "videofiles.h"

#include <QAbstractItemModelTester>
#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <cameramodel.h>

using Viewer::CameraModel;

class TestCameraModel : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void model_listsCameras_withIdAndName();
    void find_takesWhatTheListShows_andNamesTheOthers();
    void plugging_addsRow_andUnplugging_removesIt();
    void lookups_ofUnknownCameras_areNeutral();

private:
    QTemporaryDir m_cameras;
    QTemporaryDir m_media;
};

void TestCameraModel::initTestCase()
{
    qputenv("OCELLE_CAMERAS", "pattern,dir:" + QFile::encodeName(m_cameras.path()));
    QVERIFY(makeVideo(m_media.filePath(QStringLiteral("one.mkv")), 1));
}

void TestCameraModel::model_listsCameras_withIdAndName()
{
    CameraModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QCOMPARE(model.count(), 2);
    QCOMPARE(model.idAt(0), QStringLiteral("pattern:back"));
    QCOMPARE(model.data(model.index(1), CameraModel::IdRole).toString(),
             QStringLiteral("pattern:front"));
    QCOMPARE(model.data(model.index(1), CameraModel::NameRole).toString(),
             QStringLiteral("Pattern camera (front)"));
    QCOMPARE(model.nameOf(QStringLiteral("pattern:back")), QStringLiteral("Pattern camera (back)"));
    QCOMPARE(model.preferred(), QStringLiteral("pattern:front"));
    QCOMPARE(model.trouble(), QString());
}

void TestCameraModel::find_takesWhatTheListShows_andNamesTheOthers()
{
    CameraModel model;
    QCOMPARE(model.find(QStringLiteral("pattern:back")), QStringLiteral("pattern:back"));
    QCOMPARE(model.find(QStringLiteral("nowhere")), QString());
    QCOMPARE(model.problem(QStringLiteral("nowhere")),
             QStringLiteral("there is no camera \"nowhere\"; there are pattern:back and "
                            "pattern:front"));
}

void TestCameraModel::plugging_addsRow_andUnplugging_removesIt()
{
    CameraModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QSignalSpy plugged(&model, &CameraModel::plugged);
    QSignalSpy unplugged(&model, &CameraModel::unplugged);
    const QString file = m_cameras.filePath(QStringLiteral("one.mkv"));

    QVERIFY(QFile::rename(m_media.filePath(QStringLiteral("one.mkv")), file));
    QTRY_COMPARE(plugged.count(), 1);
    const QString id = plugged.first().first().toString();
    QCOMPARE(id, QStringLiteral("file:") + QFileInfo(file).canonicalFilePath());
    QCOMPARE(model.count(), 3);
    QCOMPARE(model.nameOf(id), QStringLiteral("one.mkv"));

    QVERIFY(QFile::remove(file));
    QTRY_COMPARE(unplugged.count(), 1);
    QCOMPARE(unplugged.first(), QVariantList({ id, QStringLiteral("one.mkv") }));
    QCOMPARE(model.count(), 2);
    QCOMPARE(model.indexOf(id), -1);
}

void TestCameraModel::lookups_ofUnknownCameras_areNeutral()
{
    CameraModel model;
    QCOMPARE(model.idAt(-1), QString());
    QCOMPARE(model.idAt(7), QString());
    QCOMPARE(model.nameOf(QStringLiteral("nowhere")), QString());
    QCOMPARE(model.indexOf(QString()), -1);
    QVERIFY(!model.data(QModelIndex(), CameraModel::IdRole).isValid());
}

QTEST_GUILESS_MAIN(TestCameraModel)
#include "tst_cameramodel.moc"
