// SPDX-License-Identifier: BSD-3-Clause
#include <palaver/qpvdecoder.h>

QPVDecoder::QPVDecoder(QObject *parent)
    : QObject(parent)
{
}

QPVDecoder::~QPVDecoder() = default;
