// SPDX-License-Identifier: BSD-3-Clause
#include "qpvmetatypes.h"

#include <QMetaType>
#include <QVideoSurfaceFormat>

#include <palaver/qpvdecoder.h>
#include <palaver/qpvencodedvideoframe.h>
#include <palaver/qpvencoder.h>

void registerPalaverMetaTypes()
{
    qRegisterMetaType<QPVEncodedVideoFrame>("QPVEncodedVideoFrame");
    qRegisterMetaType<QPVDecoder::Error>("QPVDecoder::Error");
    qRegisterMetaType<QPVEncoder::Error>("QPVEncoder::Error");
    qRegisterMetaType<QVideoSurfaceFormat>();
}
