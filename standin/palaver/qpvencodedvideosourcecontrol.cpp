// SPDX-License-Identifier: BSD-3-Clause
#include "qpvmetatypes.h"

#include <palaver/qpvencodedvideosourcecontrol.h>

QPVEncodedVideoSourceControl::QPVEncodedVideoSourceControl(QObject *parent)
    : QMediaControl(parent)
{
    registerPalaverMetaTypes();
}

QPVEncodedVideoSourceControl::~QPVEncodedVideoSourceControl() = default;
