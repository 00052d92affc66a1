// SPDX-License-Identifier: BSD-3-Clause
#include "encodeservicefixture.h"
#include "ocelleencodeworker.h"
#include "testpicture.h"

#include <QtTest>

#include <cstdlib>
#include <new>

namespace {

// Of this thread only: the service's own worker is about as well.
thread_local bool counting = false;
thread_local int allocations = 0;

void *allocate(std::size_t bytes)
{
    if (counting)
        ++allocations;
    if (void *memory = std::malloc(bytes ? bytes : 1))
        return memory;
    throw std::bad_alloc();
}

/*! Takes pictures and asks for no memory. */
class QuietEncoder : public Veltra::Ocelle::VideoEncoder
{
public:
    bool initialize(Veltra::Ocelle::EncoderConfig) override { return true; }
    bool encode(std::shared_ptr<Veltra::Ocelle::YCbCrFrame>, bool) override { return ++pictures; }
    bool setBitrate(int) override { return true; }
    bool setParameter(Veltra::Ocelle::VideoEncoderParameter, const std::string &) override
    {
        return true;
    }
    bool encodeRGB(std::shared_ptr<Veltra::Ocelle::RGBFrame>, bool) override { return ++pictures; }

    int pictures = 0;
};

} // namespace

void *operator new(std::size_t bytes)
{
    return allocate(bytes);
}

void operator delete(void *memory) noexcept
{
    std::free(memory);
}

void operator delete(void *memory, std::size_t) noexcept
{
    std::free(memory);
}

/*! How much memory a picture asks for on its way to the encoder. */
class TestEncodingAllocations : public QObject
{
    Q_OBJECT
private slots:
    void picture_costsOneAllocationBesideItsEvent_data()
    {
        QTest::addColumn<int>("format");
        QTest::addColumn<int>("together");
        QTest::newRow("NV12") << int(QVideoFrame::Format_NV12) << 1;
        QTest::newRow("NV12, three together") << int(QVideoFrame::Format_NV12) << 3;
        QTest::newRow("YUV420P") << int(QVideoFrame::Format_YUV420P) << 1;
        QTest::newRow("RGB32") << int(QVideoFrame::Format_RGB32) << 1;
    }

    void picture_costsOneAllocationBesideItsEvent()
    {
        QFETCH(int, format);
        QFETCH(int, together);
        EncodeServiceFixture f;
        OcelleEncodeWorker worker(f.session()); // on this thread
        const auto encoder = std::make_shared<QuietEncoder>();
        worker.start(encoder, encoderSettings());
        const QVideoFrame picture = testPicture(0, static_cast<QVideoFrame::PixelFormat>(format));
        const auto encodeAll = [&](int rounds) {
            for (int round = 0; round < rounds; ++round) {
                for (int i = 0; i < together; ++i)
                    QVERIFY(worker.enqueue(picture));
                QCoreApplication::sendPostedEvents(&worker, 1000);
            }
        };
        QCoreApplication::processEvents();
        encodeAll(30); // until the queues have their usual lengths
        const int before = encoder->pictures;
        allocations = 0;
        counting = true;
        encodeAll(100);
        counting = false;
        QCOMPARE(encoder->pictures - before, 100 * together);
        QCOMPARE(allocations, 100 * together + 100); // the pictures' and the events'
    }
};

QTEST_GUILESS_MAIN(TestEncodingAllocations)
#include "tst_encodingallocations.moc"
