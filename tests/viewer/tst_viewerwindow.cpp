// SPDX-License-Identifier: BSD-3-Clause
#include "videofiles.h"
#include "viewertest.h"

#include <QFile>
#include <QImage>
#include <QSignalSpy>
#include <QTemporaryDir>

using Veltra::Ocelle::PatternReading;

/*! What the window shows of cameras, settings and troubles. */
class TestViewerWindow : public ViewerTest
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanup() { reset(); }
    void preview_showsCamera_andMirrorsTheFrontOne_data();
    void preview_showsCamera_andMirrorsTheFrontOne();
    void preview_staysMirrored_whenSizesChange();
    void settings_changeSizeAndRate();
    void camera_thatIsChosenAlready_goesOn();
    void statistics_tellOfThePreview();
    void camera_thatIsPluggedIn_isOffered_andUnplugged_isToldOf();
    void message_hasRoomForItsWords_onPhone();
    void camera_thatIsNotThere_isToldOf_andAnotherShown();
    void size_thatIsNotOffered_isToldOf();
    void controls_areInsideTheWindow_data();
    void controls_areInsideTheWindow();

private:
    QTemporaryDir m_cameras;
    QTemporaryDir m_media;
};

void TestViewerWindow::initTestCase()
{
    qputenv("OCELLE_CAMERAS", "pattern,dir:" + QFile::encodeName(m_cameras.path()));
    QVERIFY(makeVideo(m_media.filePath(QStringLiteral("one.mkv")), 2));
}

void TestViewerWindow::preview_showsCamera_andMirrorsTheFrontOne_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<bool>("mirrored");
    QTest::newRow("back") << QStringLiteral("pattern:back") << false;
    QTest::newRow("front") << QStringLiteral("pattern:front") << true;
}

void TestViewerWindow::preview_showsCamera_andMirrorsTheFrontOne()
{
    QFETCH(QString, id);
    QFETCH(bool, mirrored);
    open({ id, QSize(), 0 });
    std::optional<PatternReading> first;
    QTRY_VERIFY((first = reading()));
    QCOMPARE(first->mirrored, mirrored);
    QCOMPARE(first->rotation, 0);
    std::optional<PatternReading> later;
    QTRY_VERIFY((later = reading()) && later->sequence > first->sequence);
    QCOMPARE(textOf("problem"), QString());
    QCOMPARE(textOf("placeholder"), QString());
}

void TestViewerWindow::preview_staysMirrored_whenSizesChange()
{
    open({ QStringLiteral("pattern:front"), QSize(), 0 });
    QTRY_VERIFY(reading());
    const auto *const choice = view("choice");
    for (const int index : { 2, 1 }) {
        QVERIFY(QMetaObject::invokeMethod(view("choice"), "chooseSize", Q_ARG(int, index)));
        QTRY_COMPARE(item("preview")->property("size").toSizeF(),
                     QSizeF(choice->property("size").toSize()));
        std::optional<PatternReading> now;
        QTRY_VERIFY((now = reading()));
        QVERIFY(now->mirrored);
    }
    for (const QSize &size : { QSize(900, 700), QSize(360, 640), QSize(1280, 800) }) {
        window()->resize(size);
        QTRY_COMPARE(window()->size(), size);
        std::optional<PatternReading> now;
        QTRY_VERIFY((now = reading()));
        QVERIFY(now->mirrored);
        QCOMPARE(now->rotation, 0);
    }
}

void TestViewerWindow::settings_changeSizeAndRate()
{
    open({ QStringLiteral("pattern:back"), QSize(640, 480), 30 });
    QTRY_VERIFY(reading());
    press(Qt::Key_S);
    QTRY_VERIFY(find("settings")->property("opened").toBool());
    QQuickItem *const box = qobject_cast<QQuickItem *>(find("sizeChoiceBox"));
    QCOMPARE(box->property("displayText").toString(), QStringLiteral("640 × 480"));
    box->forceActiveFocus(Qt::TabFocusReason);
    press(Qt::Key_Down); // the next larger one
    QTRY_COMPARE(item("preview")->property("size").toSizeF(), QSizeF(1280, 720));
    QTRY_VERIFY(reading());
    QCOMPARE(box->property("displayText").toString(), QStringLiteral("1280 × 720"));
    press(Qt::Key_Space);
    QTRY_VERIFY(box->property("popup").value<QObject *>()->property("opened").toBool());
    press(Qt::Key_Escape); // the list alone
    QTRY_VERIFY(!box->property("popup").value<QObject *>()->property("visible").toBool());
    QVERIFY(find("settings")->property("opened").toBool());
    press(Qt::Key_Escape);
    QTRY_VERIFY(!find("settings")->property("visible").toBool());
}

void TestViewerWindow::camera_thatIsChosenAlready_goesOn()
{
    open({ QStringLiteral("pattern:back"), QSize(640, 480), 30 });
    QTRY_VERIFY(reading());
    press(Qt::Key_S);
    QTRY_VERIFY(find("settings")->property("opened").toBool());
    QQuickItem *const box = qobject_cast<QQuickItem *>(find("cameraChoiceBox"));
    const auto *const list = box->property("popup").value<QObject *>();
    const auto choose = [&](Qt::Key key) {
        box->forceActiveFocus(Qt::TabFocusReason);
        press(Qt::Key_Space);
        QTRY_VERIFY(list->property("opened").toBool());
        press(key);
        press(Qt::Key_Space);
        QTRY_VERIFY(!list->property("visible").toBool());
    };
    QSignalSpy chosen(find("cameraChoice"), SIGNAL(chosen(int)));
    QSignalSpy closedOrOpened(find("cameraView"), SIGNAL(isPresentChanged()));
    choose(Qt::Key_Home); // where it is
    QCOMPARE(chosen.count(), 1);
    QCOMPARE(closedOrOpened.count(), 0);
    choose(Qt::Key_End); // the other one
    QCOMPARE(chosen.count(), 2);
    QTRY_COMPARE(closedOrOpened.count(), 2);
}

void TestViewerWindow::statistics_tellOfThePreview()
{
    open({ QStringLiteral("pattern:back"), QSize(640, 480), 30 });
    press(Qt::Key_I);
    QTRY_VERIFY(find("statistics")->property("visible").toBool());
    const QObject *const figures = view("statistics");
    QTRY_VERIFY(figures->property("delivered").toDouble() > 20);
    QTRY_VERIFY(figures->property("shown").toDouble() > 5);
    QVERIFY(figures->property("latency").toDouble() > 0);
    QVERIFY(figures->property("cpu").toDouble() > 0);
}

void TestViewerWindow::camera_thatIsPluggedIn_isOffered_andUnplugged_isToldOf()
{
    open({ QStringLiteral("pattern:back"), QSize(), 0 });
    const QObject *const cameras = view("cameras");
    QCOMPARE(cameras->property("count").toInt(), 2);
    const QString file = m_cameras.filePath(QStringLiteral("one.mkv"));
    QVERIFY(QFile::rename(m_media.filePath(QStringLiteral("one.mkv")), file));
    QTRY_COMPARE(cameras->property("count").toInt(), 3);

    const QString id = QStringLiteral("file:") + QFileInfo(file).canonicalFilePath();
    QVERIFY(QMetaObject::invokeMethod(find("cameraView"), "open", Q_ARG(QVariant, id)));
    QTRY_COMPARE(item("preview")->property("size").toSizeF(), QSizeF(320, 240));
    QCOMPARE(window()->title(), QStringLiteral("one.mkv"));

    QVERIFY(QFile::rename(file, m_media.filePath(QStringLiteral("one.mkv"))));
    QTRY_COMPARE(textOf("problem"), QStringLiteral("“one.mkv” was unplugged."));
    QVERIFY(!item("photoButton")->isEnabled());
    QCOMPARE(textOf("placeholder"), QStringLiteral("It shows again when it is plugged in."));

    QVERIFY(QFile::rename(m_media.filePath(QStringLiteral("one.mkv")), file));
    QTRY_VERIFY(item("photoButton")->isEnabled()); // it streams again
    QCOMPARE(textOf("problem"), QString());
    QVERIFY(QFile::rename(file, m_media.filePath(QStringLiteral("one.mkv"))));
    QTRY_COMPARE(textOf("problem"), QStringLiteral("“one.mkv” was unplugged."));
    QVERIFY(QMetaObject::invokeMethod(find("problemAction"), "clicked"));
    QTRY_VERIFY(reading());
    QCOMPARE(textOf("problem"), QString());
}

void TestViewerWindow::message_hasRoomForItsWords_onPhone()
{
    const QString kept = m_media.filePath(QStringLiteral("one.mkv"));
    const QString file = m_cameras.filePath(QStringLiteral("one.mkv"));
    QVERIFY(QFile::rename(kept, file));
    open({ QStringLiteral("file:") + QFileInfo(file).canonicalFilePath(), QSize(), 0 },
         QSize(360, 640));
    QTRY_VERIFY(item("photoButton")->isEnabled());
    QVERIFY(QFile::rename(file, kept));
    QTRY_VERIFY(!textOf("problem").isEmpty());
    const QQuickItem *const words = item("problemText");
    const QQuickItem *const action = item("problemAction");
    QVERIFY(action->isVisible());
    QTRY_VERIFY(words->width() > 250);
    QVERIFY(item("problem")->contains(
            action->mapToItem(item("problem"), action->boundingRect().bottomRight())));
    QVERIFY(!words->mapRectToScene(words->boundingRect())
                     .intersects(action->mapRectToScene(action->boundingRect())));
}

void TestViewerWindow::camera_thatIsNotThere_isToldOf_andAnotherShown()
{
    open({ QStringLiteral("nowhere"), QSize(123, 45), 0 });
    const auto told = QStringLiteral("There is no camera \"nowhere\"; there are pattern:back and "
                                     "pattern:front.");
    QTRY_COMPARE(textOf("problem"), told);
    QTRY_VERIFY(reading());
    QCOMPARE(textOf("problem"), told); // and not of a size that was wished of the one
}

void TestViewerWindow::size_thatIsNotOffered_isToldOf()
{
    open({ QStringLiteral("pattern:back"), QSize(123, 45), 0 });
    QTRY_VERIFY(textOf("problem").startsWith(
            QStringLiteral("Pattern camera (back): size 123x45 is not offered")));
    QTRY_VERIFY(reading());
}

void TestViewerWindow::controls_areInsideTheWindow_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("phone") << QSize(360, 640);
    QTest::newRow("smallest") << QSize(320, 400);
    QTest::newRow("wide") << QSize(1280, 800);
}

void TestViewerWindow::controls_areInsideTheWindow()
{
    QFETCH(QSize, size);
    open({ QStringLiteral("pattern:back"), QSize(), 0 }, size);
    QTRY_VERIFY(reading());
    press(Qt::Key_I);
    const QRectF window(0, 0, size.width(), size.height());
    QList<QRectF> taken;
    for (const char *name : { "photoButton", "recordButton", "recordingsButton", "switchButton",
                              "settingsButton", "statisticsButton", "statistics" }) {
        const QQuickItem *const control = item(name);
        QVERIFY2(control->isVisible(), name);
        const QRectF place = control->mapRectToScene(control->boundingRect());
        QVERIFY2(window.contains(place), name);
        for (const QRectF &other : qAsConst(taken))
            QVERIFY2(!other.intersects(place), name);
        taken.append(place);
    }
}

QTEST_MAIN(TestViewerWindow)
#include "tst_viewerwindow.moc"
