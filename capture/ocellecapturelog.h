// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QLoggingCategory>

Q_DECLARE_LOGGING_CATEGORY(qLcCapture) // "veltra.palaver.capture"
