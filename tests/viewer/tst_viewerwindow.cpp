// SPDX-License-Identifier: BSD-3-Clause
#include "homefolder.h"
#include "videofiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <patternreader.h>
#include <viewerwindow.h>

#include <optional>

using Veltra::Ocelle::PatternReading;
using Viewer::ViewerOptions;
using Viewer::ViewerWindow;

/*! The real window, driven by keys and looked at by its pixels and objects. */
class TestViewerWindow : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void preview_showsCamera_andMirrorsTheFrontOne_data();
    void preview_showsCamera_andMirrorsTheFrontOne();
    void preview_staysMirrored_whenSizesChange();
    void settings_changeSizeAndRate();
    void keys_workBesideAnOpenPanel();
    void key_changesCamera();
    void key_takesPicture();
    void keys_recordAndPlay();
    void recordings_areNotPlayed_whileItRecords();
    void picture_ofAnotherFile_isNotShown();
    void key_thatIsHeld_actsOnce_data();
    void key_thatIsHeld_actsOnce();
    void return_pressesActionOfMessage();
    void return_opensAndClosesTheListOfAChoice();
    void return_closesTheKeys();
    void recording_isCompleted_whenWindowIsClosed();
    void window_closes_whenItIsClosedTwice();
    void statistics_tellOfThePreview();
    void camera_thatIsPluggedIn_isOffered_andUnplugged_isToldOf();
    void message_hasRoomForItsWords_onPhone();
    void camera_thatIsNotThere_isToldOf_andAnotherShown();
    void size_thatIsNotOffered_isToldOf();
    void controls_areInsideTheWindow_data();
    void controls_areInsideTheWindow();
    void focus_goesRound_byTab();

private:
    void open(const ViewerOptions &options = {}, QSize size = QSize(1280, 800));
    QObject *find(const char *name) const;
    QQuickItem *item(const char *name) const { return qobject_cast<QQuickItem *>(find(name)); }
    QString textOf(const char *message) const; // while it is shown
    QObject *view(const char *property) const;
    std::optional<PatternReading> reading() const;
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void hold(Qt::Key key, const QString &text);
    QString makeRecording(const char *name);

    HomeFolder m_home;
    QTemporaryDir m_cameras;
    QTemporaryDir m_media;
    std::unique_ptr<ViewerWindow> m_viewer;
    QQuickWindow *m_window = nullptr;
};

void TestViewerWindow::initTestCase()
{
    qputenv("OCELLE_CAMERAS", "pattern,dir:" + QFile::encodeName(m_cameras.path()));
    QVERIFY(makeVideo(m_media.filePath(QStringLiteral("one.mkv")), 2));
}

void TestViewerWindow::init()
{
    m_viewer.reset();
    m_home.clear();
}

void TestViewerWindow::open(const ViewerOptions &options, QSize size)
{
    m_viewer.reset();
    m_viewer = std::make_unique<ViewerWindow>(options);
    m_window = m_viewer->window();
    QVERIFY(m_window);
    m_window->resize(size);
    m_window->requestActivate();
    QVERIFY(QTest::qWaitForWindowActive(m_window));
    QTRY_COMPARE(m_window->size(), size);
}

QObject *TestViewerWindow::find(const char *name) const
{
    QObject *const found = m_window->findChild<QObject *>(QString::fromLatin1(name));
    if (!found)
        qWarning("there is no object %s", name);
    return found;
}

QString TestViewerWindow::textOf(const char *message) const
{
    const QObject *const shown = find(message);
    return shown->property("visible").toBool() ? shown->property("text").toString() : QString();
}

QObject *TestViewerWindow::view(const char *property) const
{
    return find("cameraView")->property(property).value<QObject *>();
}

/*! What is read from the preview's own place in the window. */
std::optional<PatternReading> TestViewerWindow::reading() const
{
    const QQuickItem *const preview = item("preview");
    const QRectF place = preview->mapRectToScene(preview->property("contentRect").toRectF());
    const QImage image =
            m_window->grabWindow().copy(place.toRect()).convertToFormat(QImage::Format_RGB32);
    return Veltra::Ocelle::readPatternRgb32(image.constBits(), image.bytesPerLine(), image.width(),
                                            image.height());
}

void TestViewerWindow::press(Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    QTest::keyClick(m_window, key, modifiers);
}

/*! As an X server tells of a key that is held long enough to repeat itself three times. */
void TestViewerWindow::hold(Qt::Key key, const QString &text)
{
    const auto send = [this, key, &text](QEvent::Type type, bool isRepeated) {
        qt_handleKeyEvent(m_window, type, key, Qt::NoModifier, text, isRepeated);
        QCoreApplication::processEvents();
    };
    send(QEvent::KeyPress, false);
    for (int repeats = 0; repeats < 3; ++repeats) {
        send(QEvent::KeyRelease, true);
        send(QEvent::KeyPress, true);
    }
    send(QEvent::KeyRelease, false);
}

/*! One that is listed, of two seconds. */
QString TestViewerWindow::makeRecording(const char *name)
{
    const QString file = m_home.videos() + QLatin1Char('/') + QString::fromLatin1(name);
    const bool isMade = QDir().mkpath(m_home.videos()) &&
                        QFile::copy(m_media.filePath(QStringLiteral("one.mkv")), file);
    return isMade ? file : QString();
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
        m_window->resize(size);
        QTRY_COMPARE(m_window->size(), size);
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

void TestViewerWindow::keys_workBesideAnOpenPanel()
{
    open({ QStringLiteral("pattern:back"), QSize(640, 480), 30 });
    QTRY_VERIFY(reading());
    press(Qt::Key_S);
    QTRY_VERIFY(find("settings")->property("opened").toBool());
    press(Qt::Key_V); // in its place
    QTRY_VERIFY(find("recordings")->property("opened").toBool());
    QTRY_VERIFY(!find("settings")->property("visible").toBool());
    press(Qt::Key_P);
    QTRY_VERIFY(!textOf("notice").isEmpty());
    press(Qt::Key_V);
    QTRY_VERIFY(!find("recordings")->property("visible").toBool());
}

void TestViewerWindow::key_changesCamera()
{
    open({ QStringLiteral("pattern:back"), QSize(), 0 });
    std::optional<PatternReading> seen;
    QTRY_VERIFY((seen = reading()) && !seen->mirrored);
    press(Qt::Key_C);
    QTRY_VERIFY((seen = reading()) && seen->mirrored);
    QCOMPARE(m_window->title(), QStringLiteral("Pattern camera (front)"));
    press(Qt::Key_C);
    QTRY_VERIFY((seen = reading()) && !seen->mirrored);
}

void TestViewerWindow::key_takesPicture()
{
    open({ QStringLiteral("pattern:back"), QSize(640, 480), 0 });
    QTRY_VERIFY(reading());
    press(Qt::Key_P);
    QTRY_VERIFY(!textOf("notice").isEmpty());
    const QStringList files = HomeFolder::files(m_home.pictures(), QStringLiteral(".png"));
    QCOMPARE(files.size(), 1);
    QCOMPARE(textOf("notice"), QStringLiteral("Saved ") + files.first());
    QCOMPARE(QImage(files.first()).size(), QSize(640, 480));
}

void TestViewerWindow::keys_recordAndPlay()
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
    const QStringList files = HomeFolder::files(m_home.videos(), QString());
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

void TestViewerWindow::recordings_areNotPlayed_whileItRecords()
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
    QVERIFY(QMetaObject::invokeMethod(m_window, "play", Q_ARG(QVariant, file)));
    QVERIFY(!item("playbackView")->isVisible());
    press(Qt::Key_R);
    QTRY_VERIFY(!view("recorder")->property("active").toBool());
    QVERIFY(QMetaObject::invokeMethod(m_window, "play", Q_ARG(QVariant, file)));
    QVERIFY(item("playbackView")->isVisible());
}

void TestViewerWindow::picture_ofAnotherFile_isNotShown()
{
    const QString file = makeRecording("Camera one.mkv");
    const QString empty = makeRecording("Camera two.mkv");
    QFile cut(empty);
    QVERIFY(cut.open(QFile::ReadWrite));
    const int firstPicture = cut.readAll().indexOf("\x1f\x43\xb6\x75"); // a Matroska cluster
    QVERIFY(firstPicture > 0 && cut.resize(firstPicture + 10));
    cut.close();
    open({ QStringLiteral("pattern:back"), QSize(640, 480), 30 });
    QVERIFY(QMetaObject::invokeMethod(m_window, "play", Q_ARG(QVariant, file)));
    const auto *const player = item("playbackView")->property("player").value<QObject *>();
    QTRY_VERIFY(player->property("position").toDouble() > 0.5);
    QVERIFY(item("playback")->isVisible());
    QVERIFY(QMetaObject::invokeMethod(m_window, "play", Q_ARG(QVariant, empty)));
    QVERIFY(!player->property("details").toString().isEmpty()); // it was opened
    QVERIFY(!item("playback")->isVisible());
    QTRY_VERIFY(!textOf("playbackProblem").isEmpty());
    QVERIFY(!item("playback")->isVisible());
    QVERIFY(QMetaObject::invokeMethod(m_window, "play", Q_ARG(QVariant, file)));
    QTRY_VERIFY(item("playback")->isVisible());
    QTRY_VERIFY(!player->property("playing").toBool());
    QVERIFY(item("playback")->isVisible()); // the last one stays
}

void TestViewerWindow::key_thatIsHeld_actsOnce_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("isOnButton");
    QTest::newRow("I") << int(Qt::Key_I) << QStringLiteral("i") << false;
    QTest::newRow("Return") << int(Qt::Key_Return) << QStringLiteral("\r") << true;
    QTest::newRow("Space") << int(Qt::Key_Space) << QStringLiteral(" ") << true;
}

void TestViewerWindow::key_thatIsHeld_actsOnce()
{
    QFETCH(int, key);
    QFETCH(QString, text);
    QFETCH(bool, isOnButton);
    open({ QStringLiteral("pattern:back"), QSize(640, 480), 30 });
    QTRY_VERIFY(reading());
    if (isOnButton)
        item("statisticsButton")->forceActiveFocus(Qt::TabFocusReason);
    QSignalSpy shownOrHidden(find("statistics"), SIGNAL(visibleChanged()));
    hold(Qt::Key(key), text);
    QCOMPARE(shownOrHidden.count(), 1);
    QVERIFY(find("statistics")->property("visible").toBool());

    QSignalSpy began(view("recorder"), SIGNAL(activeChanged()));
    if (isOnButton)
        item("recordButton")->forceActiveFocus(Qt::TabFocusReason);
    hold(isOnButton ? Qt::Key(key) : Qt::Key_R, isOnButton ? text : QStringLiteral("r"));
    QTRY_VERIFY(view("recorder")->property("seconds").toDouble() > 0.5);
    QCOMPARE(began.count(), 1);
}

void TestViewerWindow::return_pressesActionOfMessage()
{
    open({ QStringLiteral("pattern:back"), QSize(), 0 });
    QTRY_VERIFY(reading());
    QObject *const message = find("problem");
    QSignalSpy acted(message, SIGNAL(acted()));
    QVERIFY(QMetaObject::invokeMethod(message, "show", Q_ARG(QVariant, QStringLiteral("Gone.")),
                                      Q_ARG(QVariant, QStringLiteral("Try again")),
                                      Q_ARG(QVariant, QString())));
    QTRY_VERIFY(item("problemAction")->isVisible());
    item("problemAction")->forceActiveFocus(Qt::TabFocusReason);
    press(Qt::Key_Return);
    QCOMPARE(acted.count(), 1);
    QCOMPARE(textOf("problem"), QString());
}

void TestViewerWindow::return_opensAndClosesTheListOfAChoice()
{
    open({ QStringLiteral("pattern:back"), QSize(640, 480), 30 });
    QTRY_VERIFY(reading());
    press(Qt::Key_S);
    QTRY_VERIFY(find("settings")->property("opened").toBool());
    QQuickItem *const box = qobject_cast<QQuickItem *>(find("sizeChoiceBox"));
    const auto *const list = box->property("popup").value<QObject *>();
    box->forceActiveFocus(Qt::TabFocusReason);
    press(Qt::Key_Return);
    QTRY_VERIFY(list->property("opened").toBool());
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    QTRY_VERIFY(!list->property("visible").toBool());
    QTRY_COMPARE(item("preview")->property("size").toSizeF(), QSizeF(1280, 720));
    QVERIFY(find("settings")->property("opened").toBool());
}

void TestViewerWindow::return_closesTheKeys()
{
    open({ QStringLiteral("pattern:back"), QSize(640, 480), 30 });
    QTRY_VERIFY(reading());
    item("statisticsButton")->forceActiveFocus(Qt::TabFocusReason);
    press(Qt::Key_F1);
    QTRY_VERIFY(find("keys")->property("opened").toBool());
    press(Qt::Key_Return); // not on what is behind
    QVERIFY(!find("statistics")->property("visible").toBool());
    for (int steps = 0; steps < 3; ++steps) {
        press(Qt::Key_Tab);
        QCOMPARE(m_window->activeFocusItem()->objectName(), QStringLiteral("keysClose"));
    }
    press(Qt::Key_Return);
    QTRY_VERIFY(!find("keys")->property("visible").toBool());
    QVERIFY(!find("statistics")->property("visible").toBool());
    press(Qt::Key_Return); // on the one that had the focus before
    QTRY_VERIFY(find("statistics")->property("visible").toBool());
}

void TestViewerWindow::recording_isCompleted_whenWindowIsClosed()
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
void TestViewerWindow::window_closes_whenItIsClosedTwice()
{
    open({ QStringLiteral("pattern:back"), QSize(640, 480), 30 });
    QTRY_VERIFY(reading());
    press(Qt::Key_R);
    QTRY_VERIFY(view("recorder")->property("seconds").toDouble() > 0.5);
    QVERIFY(!m_window->close());
    QVERIFY(m_window->isVisible());
    QVERIFY(view("recorder")->property("active").toBool()); // no event has told of its end yet
    QVERIFY(m_window->close());
    QVERIFY(!m_window->isVisible());
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
    QCOMPARE(m_window->title(), QStringLiteral("one.mkv"));

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

void TestViewerWindow::focus_goesRound_byTab()
{
    open({ QStringLiteral("pattern:back"), QSize(), 0 });
    QTRY_VERIFY(reading());
    QStringList visited;
    for (int step = 0; step < 6; ++step) {
        press(Qt::Key_Tab);
        visited.append(m_window->activeFocusItem()->objectName());
    }
    for (const char *name : { "photoButton", "recordButton", "recordingsButton", "switchButton",
                              "settingsButton", "statisticsButton" })
        QVERIFY2(visited.contains(QString::fromLatin1(name)),
                 qPrintable(visited.join(QLatin1Char(' '))));
    item("statisticsButton")->forceActiveFocus(Qt::TabFocusReason);
    press(Qt::Key_Return);
    QTRY_VERIFY(find("statistics")->property("visible").toBool());
}

QTEST_MAIN(TestViewerWindow)
#include "tst_viewerwindow.moc"
