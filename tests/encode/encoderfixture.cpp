// SPDX-License-Identifier: BSD-3-Clause
#include "encoderfixture.h"

#include "calllog.h"

#include <QtTest>

QVideoEncoderSettings h264Settings(int bitRate)
{
    QVideoEncoderSettings settings;
    settings.setCodec("video/h264");
    settings.setBitRate(bitRate);
    settings.setFrameRate(25);
    return settings;
}

EncoderFixture::EncoderFixture()
    : script(std::make_shared<FakeEncoderScript>())
    , fake(std::make_shared<FakeVideoEncoder>(1, script))
    , encoder(nullptr)
{
    CallLog::instance().clear();
    QObject::connect(&encoder, &OcelleEncoder::statusChanged,
                     [this](QPVEncoder::Status status) { statuses.append(status); });
}

void EncoderFixture::start(const QVideoEncoderSettings &settings)
{
    QVERIFY(encoder.load(fake));
    QVERIFY(encoder.start(settings));
}

QStringList EncoderFixture::calls() const
{
    return CallLog::instance().texts();
}
