// SPDX-License-Identifier: BSD-3-Clause
#include "ocellecapturelog.h"

Q_LOGGING_CATEGORY(qLcCapture, "veltra.palaver.capture")
