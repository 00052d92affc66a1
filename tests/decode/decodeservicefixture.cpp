// SPDX-License-Identifier: BSD-3-Clause
#include "decodeservicefixture.h"

#include "calllog.h"

#include <QtTest>

using Veltra::Ocelle::CodecType;

QVideoEncoderSettings streamSettings(const QString &codec, const QSize &resolution)
{
    QVideoEncoderSettings settings;
    settings.setCodec(codec);
    settings.setResolution(resolution);
    settings.setFrameRate(15);
    return settings;
}

QPVEncodedVideoFrame testFrame(quint64 timestamp, int frameType)
{
    return QPVEncodedVideoFrame(
            "xy", 2, { static_cast<QPVEncodedVideoFrame::FrameType>(frameType), timestamp });
}

DecodeServiceFixture::DecodeServiceFixture()
    : script(platform.codecs.giveDecoders())
    , provider(&platform.cameras, &platform.codecs)
    , service(new OcelleDecodeService(&provider, nullptr))
    , control(static_cast<QPVDecodeControl *>(service->requestControl(QPVDecodeControl_iid)))
    , renderer(static_cast<QVideoRendererControl *>(
              service->requestControl(QVideoRendererControl_iid)))
    , recorder(control)
{
    for (const CodecType type :
         { CodecType::VP8, CodecType::VP9, CodecType::H264, CodecType::H265 })
        platform.codecs.supportDecoder(type);
}

DecodeServiceFixture::~DecodeServiceFixture()
{
    script->openGates();
    for (int number = 1; number <= FakeVideoOutput::count(); ++number) {
        FakeVideoOutput::at(number)->bufferGate.open();
        FakeVideoOutput::at(number)->stopGate.open();
    }
    service.reset();
}

OcelleDecodeSession *DecodeServiceFixture::session() const
{
    return service->findChild<OcelleDecodeSession *>();
}

bool DecodeServiceFixture::waitForStatus(int status)
{
    return QTest::qWaitFor([this, status] {
        return !recorder.statuses.isEmpty() && recorder.statuses.last() == status;
    });
}

bool DecodeServiceFixture::start()
{
    return control->start(streamSettings()) && waitForStatus(Statuses::Starting);
}

bool DecodeServiceFixture::activate()
{
    return start() && control->decode(testFrame()) && waitForStatus(Statuses::Active) &&
           waitForCall(QStringLiteral("decoder %1: decode(0, type 0, xy)")
                               .arg(platform.codecs.madeDecoders()));
}

bool DecodeServiceFixture::waitForCall(const QString &text, int times)
{
    return QTest::qWaitFor([&] { return CallLog::instance().count(text) >= times; });
}
