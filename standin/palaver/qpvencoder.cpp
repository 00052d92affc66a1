// SPDX-License-Identifier: BSD-3-Clause
#include <palaver/qpvencoder.h>

QPVEncoder::QPVEncoder(QObject *parent)
    : QObject(parent)
{
}

QPVEncoder::~QPVEncoder() = default;
