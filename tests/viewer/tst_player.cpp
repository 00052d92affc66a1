// SPDX-License-Identifier: BSD-3-Clause
#include "picturecounter.h"
#include "videofiles.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <player.h>

using Viewer::Player;

class TestPlayer : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void file_isPlayed_toItsEnd_inItsTime();
    void file_isPlayed_again();
    void stop_endsIt_silently();
    void file_thatIsNoVideo_isToldOf();
    void file_thatWasCutOff_isToldOf();
    void surface_thatGoes_isNotTouchedAgain();

private:
    QString path(const char *name) const { return m_folder.filePath(QString::fromLatin1(name)); }

    QTemporaryDir m_folder;
};

void TestPlayer::initTestCase()
{
    QVERIFY(makeVideo(path("video.mkv"), 1));
}

void TestPlayer::file_isPlayed_toItsEnd_inItsTime()
{
    PictureCounter surface;
    Player player;
    player.setVideoSurface(&surface);
    QSignalSpy finished(&player, &Player::finished);
    QSignalSpy failed(&player, &Player::failed);
    QElapsedTimer time;
    time.start();
    player.play(path("video.mkv"));
    QVERIFY(player.isPlaying());
    QCOMPARE(player.details(), QStringLiteral("H264, 320 × 240"));
    QVERIFY(qAbs(player.duration() - 1) < 0.1);
    QTRY_COMPARE(finished.count(), 1);
    QVERIFY(time.elapsed() > 700);
    QCOMPARE(surface.pictures, 30);
    QVERIFY(player.position() > 0.9);
    QVERIFY(!player.isPlaying());
    QVERIFY(failed.isEmpty());
}

void TestPlayer::file_isPlayed_again()
{
    PictureCounter surface;
    Player player;
    player.setVideoSurface(&surface);
    QSignalSpy finished(&player, &Player::finished);
    player.play(path("video.mkv"));
    QTRY_VERIFY(surface.pictures > 5);
    player.play(path("video.mkv"));
    surface.pictures = 0;
    QTRY_COMPARE(finished.count(), 1);
    QCOMPARE(surface.pictures, 30);
}

void TestPlayer::stop_endsIt_silently()
{
    PictureCounter surface;
    Player player;
    player.setVideoSurface(&surface);
    QSignalSpy finished(&player, &Player::finished);
    QSignalSpy failed(&player, &Player::failed);
    player.play(path("video.mkv"));
    QTRY_VERIFY(surface.pictures > 0);
    player.stop();
    QVERIFY(!player.isPlaying());
    player.stop();
    QVERIFY(finished.isEmpty());
    QVERIFY(failed.isEmpty());
}

void TestPlayer::file_thatIsNoVideo_isToldOf()
{
    QFile file(path("text.mkv"));
    QVERIFY(file.open(QFile::WriteOnly) && file.write("no video") == 8 && file.flush());
    PictureCounter surface;
    Player player;
    player.setVideoSurface(&surface);
    QSignalSpy failed(&player, &Player::failed);
    player.play(file.fileName());
    QCOMPARE(failed.count(), 1);
    QVERIFY(failed.first().first().toString().contains(QStringLiteral("text.mkv")));
    player.play(path("nowhere.mkv"));
    QCOMPARE(failed.count(), 2);
    QVERIFY(!player.isPlaying());
}

void TestPlayer::file_thatWasCutOff_isToldOf()
{
    QFile whole(path("video.mkv"));
    QVERIFY(whole.open(QFile::ReadOnly));
    QFile part(path("part.mkv"));
    QVERIFY(part.open(QFile::WriteOnly));
    QVERIFY(part.write(whole.read(whole.size() / 2)) > 0);
    part.close();
    PictureCounter surface;
    Player player;
    player.setVideoSurface(&surface);
    QSignalSpy failed(&player, &Player::failed);
    QSignalSpy finished(&player, &Player::finished);
    player.play(part.fileName());
    QTRY_VERIFY(!player.isPlaying());
    QVERIFY(!failed.isEmpty());
    QVERIFY(finished.isEmpty());
    QVERIFY(surface.pictures > 0);
}

void TestPlayer::surface_thatGoes_isNotTouchedAgain()
{
    auto surface = std::make_unique<PictureCounter>();
    Player player;
    player.setVideoSurface(surface.get());
    player.play(path("video.mkv"));
    QTRY_VERIFY(surface->pictures > 0);
    surface.reset();
    QTRY_VERIFY(!player.isPlaying());
    QVERIFY(!player.videoSurface());
}

QTEST_GUILESS_MAIN(TestPlayer)
#include "tst_player.moc"
