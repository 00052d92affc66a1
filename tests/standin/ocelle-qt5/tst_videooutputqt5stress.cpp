// SPDX-License-Identifier: BSD-3-Clause
#include "outputtesting.h"
#include "recordingsurface.h"
#include "surfacethread.h"
#include "testpicture.h"

#include <QtTest>

#include <ocelle/frames.h>
#include <ocelle/videooutputqt5.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

using namespace Veltra::Ocelle;

namespace {

constexpr int Rounds = 60;

/*! Threads that call \a work again and again until they are destroyed. */
class Callers
{
public:
    ~Callers()
    {
        m_run = false;
        for (std::thread &thread : m_threads)
            thread.join();
    }

    template <typename Work>
    void add(Work work)
    {
        m_threads.emplace_back([this, work] {
            for (int i = 1; m_run; ++i) {
                work(i);
                if (i % 32 == 0)
                    std::this_thread::yield();
            }
        });
    }

private:
    std::atomic<bool> m_run { true };
    std::vector<std::thread> m_threads;
};

void addEverything(Callers &callers, VideoOutputQt5 &output)
{
    callers.add([&output](int i) { output.onGraphicBuffer(makeLive(i)); });
    callers.add([&output](int i) {
        const TestPicture picture(PixelFormat::YU12, 16 + i % 3, 8);
        YCbCrFrame frame {};
        frame.y = picture.planes[0].data;
        frame.cb = picture.planes[1].data;
        frame.cr = picture.planes[2].data;
        frame.yStride = std::uint16_t(picture.planes[0].stride);
        frame.cStride = std::uint16_t(picture.planes[1].stride);
        frame.chromaStep = 1;
        frame.width = std::uint16_t(picture.width);
        frame.height = std::uint16_t(picture.height);
        output.onVideoFrame(&frame);
        output.onGraphicBuffer(makeDecoded(i));
    });
    callers.add([&output](int i) {
        output.setMirrored(i % 16 < 8);
        output.setViewport(QRect(0, 0, 4 + i % 8, 4));
        if (i % 64 == 0)
            output.stop();
    });
}

void prepare(RecordingSurface &surface)
{
    surface.formats = { QVideoFrame::Format_NV12 }; // so that planar frames are converted
    surface.keepFrames = false;
}

} // namespace

class TestVideoOutputQt5Stress : public QObject
{
    Q_OBJECT
private slots:
    void everyPictureIsAccountedFor();
    void surfacesComeAndGo();
    void outputsComeAndGo();
};

void TestVideoOutputQt5Stress::everyPictureIsAccountedFor()
{
    SurfaceThread there;
    RecordingSurface *const surface = there.surface();
    prepare(*surface);
    VideoOutputQt5 output;
    output.setVideoSurface(surface);
    {
        Callers callers;
        addEverything(callers, output);
        QTRY_VERIFY(surface->presented() > 300);
    }
    const auto settled = [surface] {
        const VideoOutputStatistics now = statisticsOf(*surface);
        return now.delivered == now.presented + now.dropped + now.refused;
    };
    QTRY_VERIFY(settled());
    QCOMPARE(statisticsOf(*surface).presented, quint64(surface->presented()));
    QCOMPARE(statisticsOf(*surface).refused, 0u);
    for (const QThread *const thread : surface->threads())
        QCOMPARE(thread, there.thread());
}

void TestVideoOutputQt5Stress::surfacesComeAndGo()
{
    VideoOutputQt5 output;
    RecordingSurface own;
    prepare(own);
    Callers callers;
    addEverything(callers, output);
    callers.add([&own](int) {
        VideoOutputStatistics statistics;
        videoOutputStatistics(&own, &statistics);
    });
    for (int i = 0; i < Rounds; ++i) {
        SurfaceThread there;
        prepare(*there.surface());
        output.setVideoSurface(there.surface());
        if (i % 3 == 0)
            QTRY_VERIFY(there.surface()->presented() > 2);
        output.setVideoSurface(i % 2 ? &own : nullptr);
        if (i % 3 == 1) {
            const int before = own.presented();
            if (i % 2)
                QTRY_VERIFY(own.presented() > before);
            output.setVideoSurface(there.surface());
        }
        // destroyed here, with or without the output
    }
    QVERIFY(own.presented() > 0);
}

void TestVideoOutputQt5Stress::outputsComeAndGo()
{
    SurfaceThread there;
    RecordingSurface *const surface = there.surface();
    prepare(*surface);
    for (int i = 0; i < Rounds; ++i) {
        VideoOutputQt5 output;
        output.setVideoSurface(surface);
        const int before = surface->presented();
        Callers callers; // gone before the output
        addEverything(callers, output);
        QTRY_VERIFY(surface->presented() > before);
    }
    there.run([] {});
    there.run([surface] { QVERIFY(!surface->isActive()); });
}

QTEST_GUILESS_MAIN(TestVideoOutputQt5Stress)
#include "tst_videooutputqt5stress.moc"
