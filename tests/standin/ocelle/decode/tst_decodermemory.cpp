// SPDX-License-Identifier: BSD-3-Clause
#include "decodefeeder.h"
#include "decodingchecks.h"
#include "decodinglistener.h"
#include "encodedstream.h"

#include <QtTest>

#include <algorithm>
#include <cstdlib>
#include <new>

using namespace Veltra::Ocelle;

Q_DECLARE_METATYPE(Veltra::Ocelle::CodecType)

namespace {
thread_local std::size_t largestBlock = 0; // bytes, asked for by this thread

// A unit that every decoder skips.
Bytes filler(CodecType type, std::size_t size)
{
    Bytes unit =
            type == CodecType::H264 ? Bytes { 0, 0, 0, 1, 0x0c } : Bytes { 0, 0, 0, 1, 0x4c, 1 };
    unit.resize(unit.size() + size, 0xff);
    unit.push_back(0x80);
    return unit;
}

void addRows()
{
    QTest::addColumn<CodecType>("type");
    QTest::newRow("H.264") << CodecType::H264;
    QTest::newRow("H.265") << CodecType::H265;
}
} // namespace

void *operator new(std::size_t size)
{
    largestBlock = std::max(largestBlock, size);
    if (void *memory = std::malloc(size ? size : 1))
        return memory;
    throw std::bad_alloc();
}

void operator delete(void *memory) noexcept
{
    std::free(memory);
}

void operator delete(void *memory, std::size_t) noexcept
{
    std::free(memory);
}

/*! How much a decoder keeps of what comes without a picture. */
class TestDecoderMemory : public QObject
{
    Q_OBJECT

    static constexpr std::size_t MostKept = 128 * 1024; // bytes, with what the vector has to spare

    static std::string kinds(CodecType type) { return type == CodecType::H264 ? "7|8" : "32-34"; }
    static Bytes parametersOf(const MediaUnit &unit, CodecType type)
    {
        return filtered({ unit }, type, "filter_units=pass_types=" + kinds(type)).front().data;
    }

private slots:
    void parametersAgainAndAgain_areKeptWithinBounds_data() { addRows(); }
    void parametersAgainAndAgain_areKeptWithinBounds()
    {
        QFETCH(CodecType, type);
        const auto whole = encodedStream({ type, 320, 240, 20, 10 });
        Bytes head = parametersOf(whole[0], type);
        const Bytes padding = filler(type, 20000);
        head.insert(head.end(), padding.begin(), padding.end());
        DecodingListener listener;
        const auto decoder = softwareDecoder({ type }, &listener);
        DecodeFeeder feeder(decoder);
        largestBlock = 0;
        for (int i = 0; i < 500; ++i) // ten megabytes
            QVERIFY(feeder.decode(head));
        QVERIFY(largestBlock >= head.size()); // it is kept, and seen here
        QVERIFY2(largestBlock <= MostKept, qPrintable(QString::number(largestBlock)));
        for (const MediaUnit &unit :
             filtered(whole, type, "filter_units=remove_types=" + kinds(type)))
            QVERIFY(feeder.decode(unit.data));
        decoder->drain();
        QVERIFY2(listener.errors.empty(), listener.firstError());
        QCOMPARE(numbers(listener.visible), range(0, 20));
    }

    void oneThatIsTooLarge_isNotKept_data() { addRows(); }
    void oneThatIsTooLarge_isNotKept()
    {
        QFETCH(CodecType, type);
        const auto whole = encodedStream({ type, 320, 240, 20, 10 });
        Bytes head = parametersOf(whole[0], type);
        const Bytes padding = filler(type, 10000000);
        head.insert(head.end(), padding.begin(), padding.end());
        DecodingListener listener;
        const auto decoder = softwareDecoder({ type }, &listener);
        DecodeFeeder feeder(decoder);
        largestBlock = 0;
        QVERIFY(feeder.decode(head));
        QVERIFY2(largestBlock <= MostKept, qPrintable(QString::number(largestBlock)));
        for (const MediaUnit &unit : whole)
            QVERIFY(feeder.decode(unit.data));
        decoder->drain();
        QVERIFY2(listener.errors.empty(), listener.firstError());
        QCOMPARE(numbers(listener.visible), range(0, 20));
    }
};

QTEST_GUILESS_MAIN(TestDecoderMemory)
#include "tst_decodermemory.moc"
