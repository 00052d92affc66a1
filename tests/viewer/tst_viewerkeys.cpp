// SPDX-License-Identifier: BSD-3-Clause
#include "viewertest.h"

#include <QSignalSpy>

using Veltra::Ocelle::PatternReading;

/*! The keys, and where they go. */
class TestViewerKeys : public ViewerTest
{
    Q_OBJECT
private slots:
    void cleanup() { reset(); }
    void keys_workBesideAnOpenPanel();
    void key_changesCamera();
    void key_thatIsHeld_actsOnce_data();
    void key_thatIsHeld_actsOnce();
    void return_pressesActionOfMessage();
    void return_opensAndClosesTheListOfAChoice_data();
    void return_opensAndClosesTheListOfAChoice();
    void return_closesTheKeys();
    void quitKey_works_whileTheKeysAreShown();
    void focus_goesRound_byTab();

private:
    void hold(Qt::Key key, const QString &text);
};

/*! As an X server tells of a key that is held long enough to repeat itself three times. */
void TestViewerKeys::hold(Qt::Key key, const QString &text)
{
    const auto send = [this, key, &text](QEvent::Type type, bool isRepeated) {
        qt_handleKeyEvent(window(), type, key, Qt::NoModifier, text, isRepeated);
        QCoreApplication::processEvents();
    };
    send(QEvent::KeyPress, false);
    for (int repeats = 0; repeats < 3; ++repeats) {
        send(QEvent::KeyRelease, true);
        send(QEvent::KeyPress, true);
    }
    send(QEvent::KeyRelease, false);
}

void TestViewerKeys::keys_workBesideAnOpenPanel()
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

void TestViewerKeys::key_changesCamera()
{
    open({ QStringLiteral("pattern:back"), QSize(), 0 });
    std::optional<PatternReading> seen;
    QTRY_VERIFY((seen = reading()) && !seen->mirrored);
    press(Qt::Key_C);
    QTRY_VERIFY((seen = reading()) && seen->mirrored);
    QCOMPARE(window()->title(), QStringLiteral("Pattern camera (front)"));
    press(Qt::Key_C);
    QTRY_VERIFY((seen = reading()) && !seen->mirrored);
}

void TestViewerKeys::key_thatIsHeld_actsOnce_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("isOnButton");
    QTest::newRow("I") << int(Qt::Key_I) << QStringLiteral("i") << false;
    QTest::newRow("Return") << int(Qt::Key_Return) << QStringLiteral("\r") << true;
    QTest::newRow("Enter") << int(Qt::Key_Enter) << QStringLiteral("\r") << true;
    QTest::newRow("Space") << int(Qt::Key_Space) << QStringLiteral(" ") << true;
}

void TestViewerKeys::key_thatIsHeld_actsOnce()
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

void TestViewerKeys::return_pressesActionOfMessage()
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

void TestViewerKeys::return_opensAndClosesTheListOfAChoice_data()
{
    QTest::addColumn<int>("key");
    QTest::newRow("Return") << int(Qt::Key_Return);
    QTest::newRow("Enter") << int(Qt::Key_Enter);
}

void TestViewerKeys::return_opensAndClosesTheListOfAChoice()
{
    QFETCH(int, key);
    open({ QStringLiteral("pattern:back"), QSize(640, 480), 30 });
    QTRY_VERIFY(reading());
    press(Qt::Key_S);
    QTRY_VERIFY(find("settings")->property("opened").toBool());
    QQuickItem *const box = qobject_cast<QQuickItem *>(find("sizeChoiceBox"));
    const auto *const list = box->property("popup").value<QObject *>();
    box->forceActiveFocus(Qt::TabFocusReason);
    press(Qt::Key(key));
    QTRY_VERIFY(list->property("opened").toBool());
    press(Qt::Key_Down);
    press(Qt::Key(key));
    QTRY_VERIFY(!list->property("visible").toBool());
    QTRY_COMPARE(item("preview")->property("size").toSizeF(), QSizeF(1280, 720));
    QVERIFY(find("settings")->property("opened").toBool());
}

void TestViewerKeys::return_closesTheKeys()
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
        QCOMPARE(window()->activeFocusItem()->objectName(), QStringLiteral("keysClose"));
    }
    press(Qt::Key_Return);
    QTRY_VERIFY(!find("keys")->property("visible").toBool());
    QVERIFY(!find("statistics")->property("visible").toBool());
    press(Qt::Key_Return); // on the one that had the focus before
    QTRY_VERIFY(find("statistics")->property("visible").toBool());
}

void TestViewerKeys::quitKey_works_whileTheKeysAreShown()
{
    open({ QStringLiteral("pattern:back"), QSize(640, 480), 30 });
    QTRY_VERIFY(reading());
    press(Qt::Key_F1);
    QTRY_VERIFY(find("keys")->property("opened").toBool());
    press(Qt::Key_Q, Qt::ControlModifier);
    QTRY_VERIFY(!window()->isVisible());
}

void TestViewerKeys::focus_goesRound_byTab()
{
    open({ QStringLiteral("pattern:back"), QSize(), 0 });
    QTRY_VERIFY(reading());
    QStringList visited;
    for (int step = 0; step < 6; ++step) {
        press(Qt::Key_Tab);
        visited.append(window()->activeFocusItem()->objectName());
    }
    for (const char *name : { "photoButton", "recordButton", "recordingsButton", "switchButton",
                              "settingsButton", "statisticsButton" })
        QVERIFY2(visited.contains(QString::fromLatin1(name)),
                 qPrintable(visited.join(QLatin1Char(' '))));
    item("statisticsButton")->forceActiveFocus(Qt::TabFocusReason);
    press(Qt::Key_Return);
    QTRY_VERIFY(find("statistics")->property("visible").toBool());
}

QTEST_MAIN(TestViewerKeys)
#include "tst_viewerkeys.moc"
