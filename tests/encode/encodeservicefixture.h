// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "encoderecorder.h"
#include "encodestatuses.h"
#include "fakeencoderscript.h"
#include "fakeplatform.h"
#include "fakevideoencoder.h"
#include "ocelleencodeservice.h"
#include "ocelleencodesession.h"
#include "ocelleprovider.h"

#include <QVideoEncoderSettings>
#include <QVideoEncoderSettingsControl>
#include <QVideoSurfaceFormat>

#include <palaver/qpvencodecontrol.h>
#include <palaver/qpvencodedvideosourcecontrol.h>

#include <memory>

/*! NV12, 64x48, 25 frames per second. */
QVideoSurfaceFormat surfaceFormat();

/*! H.264 at \a bitRate, with one encoding option if \a option is given. */
QVideoEncoderSettings encoderSettings(int bitRate = 500000, const QString &option = QString(),
                                      const QVariant &value = QVariant());

/*!
 * An encoder service whose platform has scripted encoders, H.264 set, the control recorded. The
 * service goes on destruction, once every gate is open.
 */
class EncodeServiceFixture
{
public:
    EncodeServiceFixture();
    ~EncodeServiceFixture();

    OcelleEncodeSession *session() const;
    /*! Serves events until the recorder has seen \a status last; false if it never does. */
    bool waitForStatus(int status);
    bool start();    // serves events until the encoder is starting
    bool activate(); // and until the first picture, of time 0, is in
    /*! Serves events until the log has \a text \a times; false if it never has. */
    bool waitForCall(const QString &text, int times = 1);

    FakePlatform platform;
    std::shared_ptr<FakeEncoderScript> script;
    OcelleProvider provider;
    std::unique_ptr<OcelleEncodeService> service;
    QPVEncodeControl *control;
    QVideoEncoderSettingsControl *settings;
    QPVEncodedVideoSourceControl *source;
    EncodeRecorder recorder;
};
