// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "encodestatuses.h"
#include "fakeencoderscript.h"
#include "fakevideoencoder.h"
#include "messagelog.h"
#include "ocelleencoder.h"

#include <QList>
#include <QStringList>
#include <QVideoEncoderSettings>

#include <memory>

/*! H.264 at \a bitRate, 25 frames per second, nothing else. */
QVideoEncoderSettings h264Settings(int bitRate = 500000);

/*! An encoder object over a scripted encoder, "encoder 1", that the test shares. */
class EncoderFixture
{
public:
    EncoderFixture();

    void start(const QVideoEncoderSettings &settings); // fails the test where it does not start
    QStringList calls() const;                         // everybody's

    MessageLog messages;
    std::shared_ptr<FakeEncoderScript> script;
    std::shared_ptr<FakeVideoEncoder> fake;
    OcelleEncoder encoder;
    QList<int> statuses;
};
