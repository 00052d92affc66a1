// SPDX-License-Identifier: BSD-3-Clause
#include "qpvmetatypes.h"

#include <palaver/qpvdecodecontrol.h>

QPVDecodeControl::QPVDecodeControl(QObject *parent)
    : QMediaControl(parent)
{
    registerPalaverMetaTypes();
}

QPVDecodeControl::~QPVDecodeControl() = default;
