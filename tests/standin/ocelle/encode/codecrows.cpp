// SPDX-License-Identifier: BSD-3-Clause
#include "codecrows.h"

#include <QtTest>

#include <decode/decoderfactory.h>
#include <softwareencoderfactory.h>

using namespace Veltra::Ocelle;

Q_DECLARE_METATYPE(Veltra::Ocelle::CodecType)

namespace {
LocalCodecManager &manager()
{
    static LocalCodecManager instance(SoftwareEncoderFactory::all(), {});
    return instance;
}
} // namespace

void addCodecRows()
{
    QTest::addColumn<CodecType>("type");
    for (const VideoCodecInfo &info : manager().getVideoCodecs())
        QTest::newRow(info.codecName.c_str()) << info.type;
}

std::shared_ptr<VideoEncoder> softwareEncoder(CodecType type, EncodingListener *listener)
{
    auto encoder = manager().createVideoEncoder(type, 0);
    encoder->lockAndSetListener(listener);
    return encoder;
}

EncoderConfig encoderConfig(CodecType type, int width, int height, int bitrate)
{
    return { std::int32_t(type), width, height, width, height, bitrate, 30 };
}
