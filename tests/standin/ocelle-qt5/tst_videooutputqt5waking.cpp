// SPDX-License-Identifier: BSD-3-Clause
#include "outputtesting.h"
#include "recordingsurface.h"
#include "testpicture.h"

#include <QEventLoop>
#include <QtTest>

#include <ocelle/videooutputqt5.h>

using namespace Veltra::Ocelle;

namespace {

/*! Counts the events that are served to a thread's presenters together. */
class WakeUpCounter : public QObject
{
public:
    WakeUpCounter() { QCoreApplication::instance()->installEventFilter(this); }

    int count() const { return m_count; }

    bool eventFilter(QObject *receiver, QEvent *event) override
    {
        if (event->type() == QEvent::User && receiver->inherits("Veltra::Ocelle::PresenterWaker"))
            ++m_count;
        return false;
    }

private:
    int m_count = 0;
};

/*! Two outputs of this thread. */
struct Pair
{
    explicit Pair(QVideoFrame::PixelFormat secondFormat = QVideoFrame::Format_NV12)
        : secondSurface({ secondFormat })
    {
        first.setVideoSurface(&firstSurface);
        second.setVideoSurface(&secondSurface);
    }

    void deliver(const std::shared_ptr<GraphicBuffer> &picture)
    {
        first.onGraphicBuffer(picture);
        second.onGraphicBuffer(picture);
    }

    RecordingSurface firstSurface, secondSurface;
    VideoOutputQt5 first, second;
};

} // namespace

/*! How the outputs whose surfaces live on one thread are woken, and what they share. */
class TestVideoOutputQt5Waking : public QObject
{
    Q_OBJECT

private slots:
    void outputsOfOneThread_areWokenByOneEvent()
    {
        Pair outputs;
        const WakeUpCounter wakeUps;
        outputs.deliver(makeLive(1));
        handleEvents();
        QCOMPARE(outputs.firstSurface.presented(), 1);
        QCOMPARE(outputs.secondSurface.presented(), 1);
        QCOMPARE(wakeUps.count(), 1);
        outputs.deliver(makeLive(2));
        handleEvents();
        QCOMPARE(outputs.secondSurface.presented(), 2);
        QCOMPARE(wakeUps.count(), 2);
    }

    void manyPicturesForABusyThread_makeOneEvent()
    {
        Pair outputs;
        const WakeUpCounter wakeUps;
        for (int i = 1; i <= 10; ++i)
            outputs.deliver(makeLive(i));
        handleEvents();
        QCOMPARE(outputs.firstSurface.startTimes(), QList<qint64> { 10 });
        QCOMPARE(outputs.secondSurface.startTimes(), QList<qint64> { 10 });
        QCOMPARE(wakeUps.count(), 1);
    }

    void onePictureOnTwoSurfaces_isOneFrame()
    {
        Pair outputs;
        outputs.deliver(makeLive(1));
        handleEvents();
        QCOMPARE(outputs.firstSurface.frames().size(), 1);
        QVERIFY(outputs.firstSurface.frames() == outputs.secondSurface.frames());
    }

    void differentPicturesOnTwoSurfaces_areDifferentFrames()
    {
        Pair outputs;
        outputs.first.onGraphicBuffer(makeLive(1));
        outputs.second.onGraphicBuffer(makeLive(2));
        handleEvents();
        QCOMPARE(outputs.firstSurface.startTimes(), QList<qint64> { 1 });
        QCOMPARE(outputs.secondSurface.startTimes(), QList<qint64> { 2 });
    }

    void onePictureInTwoFormats_isTwoFrames()
    {
        Pair outputs(QVideoFrame::Format_RGB32);
        outputs.deliver(makeLive(1));
        handleEvents();
        QCOMPARE(outputs.firstSurface.frames().value(0).pixelFormat(), QVideoFrame::Format_NV12);
        QCOMPARE(outputs.secondSurface.frames().value(0).pixelFormat(), QVideoFrame::Format_RGB32);
    }

    void sharedFrame_isGivenUpWhenAllHaveBeenServed()
    {
        Pair outputs;
        outputs.firstSurface.keepFrames = outputs.secondSurface.keepFrames = false;
        std::weak_ptr<GraphicBuffer> picture;
        {
            const auto held = makeLive(1);
            picture = held;
            outputs.deliver(held);
        }
        handleEvents();
        QCOMPARE(outputs.secondSurface.presented(), 1);
        QVERIFY(picture.expired());
    }

    void secondOutput_isServedThoughTheFirstIsDestroyedMeanwhile()
    {
        RecordingSurface secondSurface;
        VideoOutputQt5 second;
        second.setVideoSurface(&secondSurface);
        RecordingSurface firstSurface;
        auto first = std::make_unique<VideoOutputQt5>();
        first->setVideoSurface(&firstSurface);
        firstSurface.onPresent = [&](const QVideoFrame &) {
            first.reset();
            return true;
        };
        const auto picture = makeLive(1);
        first->onGraphicBuffer(picture);
        second.onGraphicBuffer(picture);
        handleEvents();
        QVERIFY(!first);
        QCOMPARE(secondSurface.presented(), 1);
    }

    void outputThatWaits_mayBeDestroyedFromWithinAnothersSurface()
    {
        RecordingSurface firstSurface, secondSurface;
        VideoOutputQt5 first;
        first.setVideoSurface(&firstSurface);
        auto second = std::make_unique<VideoOutputQt5>();
        second->setVideoSurface(&secondSurface);
        firstSurface.onPresent = [&](const QVideoFrame &) {
            second.reset();
            return true;
        };
        const auto picture = makeLive(1);
        first.onGraphicBuffer(picture);
        second->onGraphicBuffer(picture);
        handleEvents();
        QCOMPARE(firstSurface.presented(), 1);
        QCOMPARE(secondSurface.presented(), 0);
    }

    void outputBehindAnEventLoopInPresent_isServedThere()
    {
        Pair outputs;
        int seenInside = 0;
        outputs.firstSurface.onPresent = [&](const QVideoFrame &) {
            outputs.firstSurface.onPresent = nullptr;
            outputs.second.onGraphicBuffer(makeLive(2));
            QEventLoop().processEvents();
            seenInside = outputs.secondSurface.presented();
            return true;
        };
        outputs.first.onGraphicBuffer(makeLive(1));
        handleEvents();
        QCOMPARE(seenInside, 1);
    }

    void outputWokenTogetherWithOneThatRunsAnEventLoop_isNotHeldUp()
    {
        Pair outputs;
        int seenInside = 0;
        outputs.firstSurface.onPresent = [&](const QVideoFrame &) {
            outputs.firstSurface.onPresent = nullptr;
            for (int i = 2; i < 60; ++i) { // two seconds at 30 a second
                outputs.second.onGraphicBuffer(makeLive(i));
                QEventLoop().processEvents();
            }
            seenInside = outputs.secondSurface.presented();
            return true;
        };
        outputs.deliver(makeLive(1));
        handleEvents();
        QVERIFY2(seenInside > 0, "nothing was shown while the other surface was busy");
    }
};

QTEST_GUILESS_MAIN(TestVideoOutputQt5Waking)
#include "tst_videooutputqt5waking.moc"
