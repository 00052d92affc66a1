// SPDX-License-Identifier: BSD-3-Clause
#include "decoderfixture.h"

#include "calllog.h"

#include <QtTest>

using namespace Statuses;

DecoderFixture::DecoderFixture()
    : script(std::make_shared<FakeDecoderScript>())
    , fake(make(1))
    , decoder(nullptr)
{
    CallLog::instance().clear();
    QObject::connect(&decoder, &OcelleDecoder::statusChanged, [this](QPVDecoder::Status now) {
        statuses.append(now);
        CallLog::instance().add("status", QString::number(now));
    });
}

std::shared_ptr<FakeVideoDecoder> DecoderFixture::make(int number) const
{
    return std::make_shared<FakeVideoDecoder>(number, script);
}

void DecoderFixture::bringTo(int status)
{
    const bool isDecoding = status == Active || status == Stopping;
    if (status != Unloaded)
        QVERIFY(decoder.load(fake));
    if (status == Starting || isDecoding)
        QVERIFY(decoder.start(streamSettings()));
    if (isDecoding)
        QVERIFY(decoder.decode(testFrame()));
    if (status == Standby || status == Stopping) // where no call leaves it
        decoder.setStatus(static_cast<QPVDecoder::Status>(status));
    QCOMPARE(int(decoder.status()), status);
    statuses.clear();
    CallLog::instance().clear();
}

QStringList DecoderFixture::calls() const
{
    return CallLog::instance().texts();
}

void addStatusRows()
{
    QTest::addColumn<int>("status");
    QTest::newRow("unloaded") << Unloaded;
    QTest::newRow("loaded") << Loaded;
    QTest::newRow("standby") << Standby;
    QTest::newRow("stopping") << Stopping;
    QTest::newRow("starting") << Starting;
    QTest::newRow("active") << Active;
}
