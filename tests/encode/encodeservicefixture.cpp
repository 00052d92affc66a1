// SPDX-License-Identifier: BSD-3-Clause
#include "encodeservicefixture.h"

#include "calllog.h"
#include "testpicture.h"

#include <QtTest>

QVideoSurfaceFormat surfaceFormat()
{
    QVideoSurfaceFormat format(QSize(64, 48), QVideoFrame::Format_NV12);
    format.setFrameRate(25);
    return format;
}

QVideoEncoderSettings encoderSettings(int bitRate, const QString &option, const QVariant &value)
{
    QVideoEncoderSettings settings;
    settings.setCodec(QStringLiteral("video/h264"));
    settings.setBitRate(bitRate);
    settings.setEncodingMode(QMultimedia::ConstantBitRateEncoding);
    settings.setResolution(64, 48);
    settings.setFrameRate(25);
    if (!option.isEmpty())
        settings.setEncodingOption(option, value);
    return settings;
}

EncodeServiceFixture::EncodeServiceFixture()
    : script(platform.codecs.giveEncoders())
    , provider(&platform.cameras, &platform.codecs)
    , service(new OcelleEncodeService(&provider, nullptr))
    , control(static_cast<QPVEncodeControl *>(service->requestControl(QPVEncodeControl_iid)))
    , settings(static_cast<QVideoEncoderSettingsControl *>(
              service->requestControl(QVideoEncoderSettingsControl_iid)))
    , source(static_cast<QPVEncodedVideoSourceControl *>(
              service->requestControl(QPVEncodedVideoSourceControl_iid)))
    , recorder(control)
{
    settings->setVideoSettings(encoderSettings());
}

EncodeServiceFixture::~EncodeServiceFixture()
{
    script->initializeGate.open();
    script->encodeGate.open();
    script->destroyGate.open();
    service.reset();
}

OcelleEncodeSession *EncodeServiceFixture::session() const
{
    return service->findChild<OcelleEncodeSession *>();
}

bool EncodeServiceFixture::waitForStatus(int status)
{
    return QTest::qWaitFor([this, status] {
        return !recorder.statuses.isEmpty() && recorder.statuses.last() == status;
    });
}

bool EncodeServiceFixture::start()
{
    return control->start(surfaceFormat()) && waitForStatus(Statuses::Starting);
}

bool EncodeServiceFixture::activate()
{
    return start() && control->encode(testPicture()) && waitForStatus(Statuses::Active);
}

bool EncodeServiceFixture::waitForCall(const QString &text, int times)
{
    return QTest::qWaitFor([&] { return CallLog::instance().count(text) >= times; });
}
