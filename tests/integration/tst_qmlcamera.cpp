// SPDX-License-Identifier: BSD-3-Clause
#include <QImage>
#include <QQuickItem>
#include <QQuickView>
#include <QTest>

#include <patternreader.h>

#include <optional>

using Veltra::Ocelle::PatternReading;

/*! QML's own Camera and VideoOutput, in a window, looked at as a person would: by its pixels. */
class TestQmlCamera : public QObject
{
    Q_OBJECT
private slots:
    void videoOutput_showsPictures_data();
    void videoOutput_showsPictures();
};

namespace {

struct Bar
{
    const char *name;
    QRgb colour;
};

/*! The test picture's colour bars from left to right, over its upper quarter. */
const Bar Bars[] = { { "grey", 0xbfbfbf },  { "yellow", 0xbfbf00 },  { "cyan", 0x00bfbf },
                     { "green", 0x00bf00 }, { "magenta", 0xbf00bf }, { "red", 0xbf0000 },
                     { "blue", 0x0000bf },  { "black", 0x000000 } };
constexpr int BarCount = sizeof(Bars) / sizeof(Bars[0]);

std::optional<PatternReading> read(const QImage &screenshot)
{
    const QImage pixels = screenshot.convertToFormat(QImage::Format_RGB32);
    return Veltra::Ocelle::readPatternRgb32(pixels.constBits(), pixels.bytesPerLine(),
                                            pixels.width(), pixels.height());
}

bool isNear(QRgb seen, QRgb wanted)
{
    constexpr int Tolerance = 24; // the matrix of the conversion is the scene graph's choice
    return qAbs(qRed(seen) - qRed(wanted)) <= Tolerance &&
           qAbs(qGreen(seen) - qGreen(wanted)) <= Tolerance &&
           qAbs(qBlue(seen) - qBlue(wanted)) <= Tolerance;
}

/*! The name of the first bar of \a screenshot that has another colour; empty if all are right. */
QString wrongBar(const QImage &screenshot, bool mirrored)
{
    for (int i = 0; i < BarCount; ++i) {
        const int place = mirrored ? BarCount - 1 - i : i;
        const QPoint middle((2 * place + 1) * screenshot.width() / (2 * BarCount),
                            screenshot.height() / 8);
        const QRgb seen = screenshot.pixel(middle);
        if (!isNear(seen, Bars[i].colour)) {
            return QStringLiteral("%1 is %2")
                    .arg(QLatin1String(Bars[i].name))
                    .arg(seen & 0xffffff, 6, 16, QLatin1Char('0'));
        }
    }
    return QString();
}

} // namespace

void TestQmlCamera::videoOutput_showsPictures_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<bool>("mirrored");
    QTest::newRow("back") << QStringLiteral("pattern:back") << false;
    QTest::newRow("front") << QStringLiteral("pattern:front") << true;
}

void TestQmlCamera::videoOutput_showsPictures()
{
    QFETCH(QString, id);
    QFETCH(bool, mirrored);
    QQuickView view(QUrl::fromLocalFile(QStringLiteral(OCELLE_SCENE)));
    QCOMPARE(view.status(), QQuickView::Ready);
    auto *const camera = view.rootObject()->property("camera").value<QObject *>();
    QVERIFY(camera);
    camera->setProperty("deviceId", id);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));

    QImage screenshot;
    std::optional<PatternReading> first;
    QTRY_VERIFY2((screenshot = view.grabWindow(), first = read(screenshot)).has_value(),
                 qPrintable(camera->property("errorString").toString()));
    QCOMPARE(screenshot.size(), QSize(640, 480));
    QCOMPARE(first->mirrored, mirrored);
    QCOMPARE(first->rotation, 0);
    QCOMPARE(wrongBar(screenshot, mirrored), QString());

    // It is a moving picture.
    std::optional<PatternReading> later;
    QTRY_VERIFY((later = read(view.grabWindow())) && later->sequence > first->sequence);
}

QTEST_MAIN(TestQmlCamera)
#include "tst_qmlcamera.moc"
