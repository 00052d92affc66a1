// SPDX-License-Identifier: BSD-3-Clause
#include "qpvmetatypes.h"

#include <palaver/qpvencodecontrol.h>

QPVEncodeControl::QPVEncodeControl(QObject *parent)
    : QMediaControl(parent)
{
    registerPalaverMetaTypes();
}

QPVEncodeControl::~QPVEncodeControl() = default;
