// SPDX-License-Identifier: BSD-3-Clause
#include "backendplugin.h"
#include "recording.h"

#include <QCoreApplication>
#include <QDir>
#include <QLoggingCategory>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace Tool;

/*! With the real back end and the real encoders. */
class RecordingTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }
    void recordingThatEndsAtItsStart_ends();
    void recordingThatEndsAtItsStart_ends_data();
    void recordingThatWasNotStarted_ends();
    void recordingThatEndsTwice_endsOnce();

private:
    RecordingSettings settings(VideoCodec codec) const;
    QMediaServiceProviderPlugin *m_backend = nullptr; // Qt's
    std::unique_ptr<QTemporaryDir> m_folder;
};

void RecordingTest::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false"));
    QCoreApplication::setLibraryPaths({ QStringLiteral(OCELLE_PLUGINS) });
    QString error;
    m_backend = backendPlugin(&error);
    QVERIFY2(m_backend, qPrintable(error));
}

RecordingSettings RecordingTest::settings(VideoCodec codec) const
{
    RecordingSettings settings;
    settings.file = m_folder->filePath(QStringLiteral("out.mkv"));
    settings.codec = codec;
    settings.size = QSize(320, 240);
    return settings;
}

void RecordingTest::recordingThatEndsAtItsStart_ends_data()
{
    QTest::addColumn<int>("codec");
    for (const QString &name : codecNames())
        QTest::newRow(qPrintable(name)) << int(*codecNamed(name));
}

// No event gets its turn between the two: the encoder is not there yet when it is to stop.
void RecordingTest::recordingThatEndsAtItsStart_ends()
{
    QFETCH(int, codec);
    for (int round = 0; round < 50; ++round) {
        Recording recording(m_backend);
        QSignalSpy ended(&recording, &Recording::ended);
        QSignalSpy failed(&recording, &Recording::failed);
        QString error;
        QVERIFY2(recording.start(settings(VideoCodec(codec)), &error), qPrintable(error));
        recording.end();
        QTRY_VERIFY2(!ended.isEmpty(), QByteArray::number(round).constData());
        QVERIFY(failed.isEmpty());
        QVERIFY(!recording.close(&error)); // nothing is in it
        QVERIFY2(error.endsWith(QLatin1String("nothing was recorded")), qPrintable(error));
        QVERIFY(QDir(m_folder->path()).isEmpty());
    }
}

void RecordingTest::recordingThatWasNotStarted_ends()
{
    Recording recording(m_backend);
    QSignalSpy ended(&recording, &Recording::ended);
    recording.end();
    QTRY_COMPARE(ended.size(), 1);
}

void RecordingTest::recordingThatEndsTwice_endsOnce()
{
    Recording recording(m_backend);
    QSignalSpy started(&recording, &Recording::started);
    QSignalSpy ended(&recording, &Recording::ended);
    QString error;
    QVERIFY2(recording.start(settings(VideoCodec::H264), &error), qPrintable(error));
    QTRY_COMPARE(started.size(), 1);
    recording.end();
    recording.end();
    QTRY_COMPARE(ended.size(), 1);
    recording.end();
    QCoreApplication::processEvents();
    QCOMPARE(ended.size(), 1);
}

QTEST_GUILESS_MAIN(RecordingTest)
#include "tst_recording.moc"
