// SPDX-License-Identifier: BSD-3-Clause
#include "videofiles.h"
#include "viewertest.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QSignalSpy>
#include <QTemporaryDir>

/*! Pictures and recordings that the window makes and plays. */
class TestViewerRecordings : public ViewerTest
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanup() { reset(); }
    void key_takesPicture();
    void keys_recordAndPlay();
    void return_playsTheChosenRecording_data();
    void return_playsTheChosenRecording();
    void recordings_areNotPlayed_whileItRecords();
    void picture_ofAnotherFile_isNotShown();
    void recording_isCompleted_whenWindowIsClosed();
    void window_closes_whenItIsClosedTwice();

private:
    QString makeRecording(const char *name);
    QTemporaryDir m_media;
};

void TestViewerRecordings::initTestCase()
{
    QVERIFY(makeVideo(m_media.filePath(QStringLiteral("one.mkv")), 2));
}

/*! One that is listed, of two seconds. */
QString TestViewerRecordings::makeRecording(const char *name)
{
    const QString file = home().videos() + QLatin1Char('/') + QString::fromLatin1(name);
    const bool isMade = QDir().mkpath(home().videos()) &&
                        QFile::copy(m_media.filePath(QStringLiteral("one.mkv")), file);
    return isMade ? file : QString();
}

void TestViewerRecordings::key_takesPicture()
{
    open({ QStringLiteral("pattern:back"), QSize(640, 480), 0 });
    QTRY_VERIFY(reading());
    press(Qt::Key_P);
    QTRY_VERIFY(!textOf("notice").isEmpty());
    const QStringList files = HomeFolder::files(home().pictures(), QStringLiteral(".png"));
    QCOMPARE(files.size(), 1);
    QCOMPARE(textOf("notice"), QStringLiteral("Saved ") + files.first());
    QCOMPARE(QImage(files.first()).size(), QSize(640, 480));
}

void TestViewerRecordings::keys_recordAndPlay()
{
    open({ QStringLiteral("pattern:back"), QSize(640, 480), 30 });
    QTRY_VERIFY(reading());
    press(Qt::Key_R);
    const QObject *const recorder = view("recorder");
    QTRY_VERIFY(recorder->property("seconds").toDouble() > 1);
    QVERIFY(find("recordingBadge")->property("visible").toBool());
    QVERIFY(!item("switchButton")->isEnabled());
    press(Qt::Key_R);
    QTRY_VERIFY(textOf("notice").startsWith(QStringLiteral("Saved ")));
    const QStringList files = HomeFolder::files(home().videos(), QString());
    QCOMPARE(files.size(), 1);
    QVERIFY(decodedPictures(files.first()) > 1);

    press(Qt::Key_L);
    QTRY_VERIFY(item("playbackView")->isVisible());
    const auto *const player = item("playbackView")->property("player").value<QObject *>();
    QTRY_VERIFY(player->property("position").toDouble() > 0.5);
    QCOMPARE(player->property("details").toString(), QStringLiteral("H264, 640 × 480"));
    QCOMPARE(item("playback")->property("size").toSizeF(), QSizeF(640, 480));
    QTRY_VERIFY(!player->property("playing").toBool());
    QCOMPARE(textOf("playbackProblem"), QString());
    press(Qt::Key_Escape);
    QTRY_VERIFY(!item("playbackView")->isVisible());
    QTRY_VERIFY(reading());

    QFile damaged(files.first());
    QVERIFY(damaged.open(QFile::WriteOnly));
    QVERIFY(damaged.write("This is no video.") > 0);
    damaged.close();
    press(Qt::Key_L);
    QTRY_VERIFY(!textOf("playbackProblem").isEmpty());
    QVERIFY(!item("playback")->isVisible()); // nothing of what played before
}

void TestViewerRecordings::return_playsTheChosenRecording_data()
{
    QTest::addColumn<int>("key");
    QTest::newRow("Return") << int(Qt::Key_Return);
    QTest::newRow("Enter") << int(Qt::Key_Enter);
}

void TestViewerRecordings::return_playsTheChosenRecording()
{
    QFETCH(int, key);
    const QString file = makeRecording("Camera one.mkv");
    QVERIFY(!file.isEmpty());
    open({ QStringLiteral("pattern:back"), QSize(640, 480), 30 });
    QTRY_VERIFY(reading());
    press(Qt::Key_V);
    QTRY_VERIFY(find("recordings")->property("opened").toBool());
    item("recordingsList")->forceActiveFocus(Qt::TabFocusReason);
    press(Qt::Key(key));
    QTRY_VERIFY(item("playbackView")->isVisible());
    QCOMPARE(item("playbackView")->property("file").toString(), file);
}

void TestViewerRecordings::recordings_areNotPlayed_whileItRecords()
{
    const QString file = makeRecording("Camera one.mkv");
    QVERIFY(!file.isEmpty());
    open({ QStringLiteral("pattern:back"), QSize(640, 480), 30 });
    QTRY_VERIFY(reading());
    press(Qt::Key_R);
    QTRY_VERIFY(view("recorder")->property("seconds").toDouble() > 0);
    press(Qt::Key_R);
    QTRY_VERIFY(!textOf("notice").isEmpty());
    QVERIFY(item("noticeAction")->isEnabled()); // "Play"

    press(Qt::Key_V);
    QTRY_VERIFY(find("recordings")->property("opened").toBool());
    press(Qt::Key_R);
    QTRY_VERIFY(view("recorder")->property("seconds").toDouble() > 0);
    QTRY_VERIFY(!find("recordings")->property("visible").toBool());
    press(Qt::Key_V);
    QVERIFY(!find("recordings")->property("visible").toBool());
    QVERIFY(!item("noticeAction")->isEnabled());
    QVERIFY(QMetaObject::invokeMethod(window(), "play", Q_ARG(QVariant, file)));
    QVERIFY(!item("playbackView")->isVisible());
    press(Qt::Key_R);
    QTRY_VERIFY(!view("recorder")->property("active").toBool());
    QVERIFY(QMetaObject::invokeMethod(window(), "play", Q_ARG(QVariant, file)));
    QVERIFY(item("playbackView")->isVisible());
}

void TestViewerRecordings::picture_ofAnotherFile_isNotShown()
{
    const QString file = makeRecording("Camera one.mkv");
    const QString empty = makeRecording("Camera two.mkv");
    QFile cut(empty);
    QVERIFY(cut.open(QFile::ReadWrite));
    const int firstPicture = cut.readAll().indexOf("\x1f\x43\xb6\x75"); // a Matroska cluster
    QVERIFY(firstPicture > 0 && cut.resize(firstPicture + 10));
    cut.close();
    open({ QStringLiteral("pattern:back"), QSize(640, 480), 30 });
    QVERIFY(QMetaObject::invokeMethod(window(), "play", Q_ARG(QVariant, file)));
    const auto *const player = item("playbackView")->property("player").value<QObject *>();
    QTRY_VERIFY(player->property("position").toDouble() > 0.5);
    QVERIFY(item("playback")->isVisible());
    QVERIFY(QMetaObject::invokeMethod(window(), "play", Q_ARG(QVariant, empty)));
    QVERIFY(!player->property("details").toString().isEmpty()); // it was opened
    QVERIFY(!item("playback")->isVisible());
    QTRY_VERIFY(!textOf("playbackProblem").isEmpty());
    QVERIFY(!item("playback")->isVisible());
    QVERIFY(QMetaObject::invokeMethod(window(), "play", Q_ARG(QVariant, file)));
    QTRY_VERIFY(item("playback")->isVisible());
    QTRY_VERIFY(!player->property("playing").toBool());
    QVERIFY(item("playback")->isVisible()); // the last one stays
}

void TestViewerRecordings::recording_isCompleted_whenWindowIsClosed()
{
    open({ QStringLiteral("pattern:back"), QSize(640, 480), 30 });
    QTRY_VERIFY(reading());
    press(Qt::Key_R);
    QTRY_VERIFY(view("recorder")->property("seconds").toDouble() > 0.5);
    QSignalSpy finished(view("recorder"), SIGNAL(finished(QString)));
    press(Qt::Key_Q, Qt::ControlModifier);
    QTRY_COMPARE(finished.count(), 1);
    QVERIFY(decodedPictures(finished.first().first().toString()) > 1);
}

/*! As somebody does whose encoder does not come to an end. */
void TestViewerRecordings::window_closes_whenItIsClosedTwice()
{
    open({ QStringLiteral("pattern:back"), QSize(640, 480), 30 });
    QTRY_VERIFY(reading());
    press(Qt::Key_R);
    QTRY_VERIFY(view("recorder")->property("seconds").toDouble() > 0.5);
    QVERIFY(!window()->close());
    QVERIFY(window()->isVisible());
    QVERIFY(view("recorder")->property("active").toBool()); // no event has told of its end yet
    QVERIFY(window()->close());
    QVERIFY(!window()->isVisible());
}

QTEST_MAIN(TestViewerRecordings)
#include "tst_viewerrecordings.moc"
