// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "decoderecorder.h"
#include "fakedecoderscript.h"
#include "fakeplatform.h"
#include "fakesurface.h"
#include "fakevideodecoder.h"
#include "ocelledecodeservice.h"
#include "ocelledecodesession.h"
#include "ocelleprovider.h"

#include <QVideoEncoderSettings>
#include <QVideoRendererControl>

#include <palaver/qpvdecodecontrol.h>
#include <palaver/qpvencodedvideoframe.h>

#include <memory>

/*! The values of the lists of statuses, in the order of a decoder's life. */
namespace Statuses {
constexpr int Unloaded = QPVDecoder::UnloadedStatus;
constexpr int Loaded = QPVDecoder::LoadedStatus;
constexpr int Standby = QPVDecoder::StandbyStatus; // never told
constexpr int Stopping = QPVDecoder::StoppingStatus;
constexpr int Starting = QPVDecoder::StartingStatus;
constexpr int Active = QPVDecoder::ActiveStatus;
} // namespace Statuses

/*! \a codec, 64x48 unless told otherwise, 15 frames per second. */
QVideoEncoderSettings streamSettings(const QString &codec = QStringLiteral("video/h264"),
                                     const QSize &resolution = QSize(64, 48));

/*! A frame that holds "xy", of kind \a frameType. */
QPVEncodedVideoFrame testFrame(quint64 timestamp = 0, int frameType = 1);

/*!
 * A decoder service whose platform has scripted decoders of every codec, the control recorded. The
 * service goes on destruction, once every gate is open.
 */
class DecodeServiceFixture
{
public:
    DecodeServiceFixture();
    ~DecodeServiceFixture();

    OcelleDecodeSession *session() const;
    std::shared_ptr<FakeVideoDecoder> decoder() const { return platform.codecs.decoder(); }
    /*! Serves events until the recorder has seen \a status last; false if it never does. */
    bool waitForStatus(int status);
    bool start();    // serves events until the decoder is starting
    bool activate(); // and until the first frame, of time 0, is in
    /*! Serves events until the log has \a text \a times; false if it never has. */
    bool waitForCall(const QString &text, int times = 1);

    FakePlatform platform;
    std::shared_ptr<FakeDecoderScript> script;
    OcelleProvider provider;
    std::unique_ptr<OcelleDecodeService> service;
    QPVDecodeControl *control;
    QVideoRendererControl *renderer;
    DecodeRecorder recorder;
};
