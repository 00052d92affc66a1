// SPDX-License-Identifier: BSD-3-Clause
#include "toolprocess.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

/*! "ocelle watch" with the real plugins and a folder whose videos are cameras. */
class WatchToolTest : public QObject
{
    Q_OBJECT
private slots:
    void watch_tellsWhichCamerasThereAreAndEndsWell();
    void watch_tellsOfCamerasThatComeAndGo();
};

void WatchToolTest::watch_tellsWhichCamerasThereAreAndEndsWell()
{
    ToolProcess watch({ QStringLiteral("watch") }, QStringLiteral("pattern"));
    QVERIFY(watch.nextLine().startsWith("present pattern:back  "));
    QVERIFY(watch.nextLine().startsWith("present pattern:front  "));
    watch.interrupt();
    const ToolResult result = watch.finish();
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.output, QByteArray());
    QCOMPARE(result.errors, QByteArray());
}

void WatchToolTest::watch_tellsOfCamerasThatComeAndGo()
{
    const QString video = QStringLiteral(OCELLE_MEDIA_DIR "/ship-cif.mkv");
    if (!QFile::exists(video))
        QSKIP(qPrintable(QStringLiteral("There is no ") + video));
    const QTemporaryDir folder;
    const QString copy = folder.filePath(QStringLiteral("ship.mkv"));
    ToolProcess watch({ QStringLiteral("watch"), QStringLiteral("--json") },
                      QStringLiteral("pattern,dir:") + folder.path());
    const auto next = [&watch] { return QJsonDocument::fromJson(watch.nextLine()).object(); };
    const QString event = QStringLiteral("event");
    const QString id = QStringLiteral("id");
    QCOMPARE(next().value(event).toString(), QStringLiteral("present"));
    QCOMPARE(next().value(event).toString(), QStringLiteral("present"));

    const QTemporaryDir elsewhere;
    const QString whole = elsewhere.filePath(QStringLiteral("ship.mkv"));
    QVERIFY(QFile::copy(video, whole));
    QVERIFY(QFile::rename(whole, copy));
    const QJsonObject added = next();
    QCOMPARE(added.value(event).toString(), QStringLiteral("added"));
    QVERIFY(added.value(id).toString().contains(QStringLiteral("ship.mkv")));
    QVERIFY(!added.value(QStringLiteral("name")).toString().isEmpty());

    QVERIFY(QFile::setPermissions(copy, QFile::ReadOwner | QFile::WriteOwner));
    QVERIFY(QFile::remove(copy));
    const QJsonObject removed = next();
    QCOMPARE(removed.value(event).toString(), QStringLiteral("removed"));
    QCOMPARE(removed.value(id), added.value(id));
    watch.interrupt();
    QCOMPARE(watch.finish().exitCode, 0);
}

QTEST_GUILESS_MAIN(WatchToolTest)
#include "tst_watchtool.moc"
