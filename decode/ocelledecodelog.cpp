// SPDX-License-Identifier: BSD-3-Clause
#include "ocelledecodelog.h"

Q_LOGGING_CATEGORY(qLcDecode, "veltra.palaver.decoder.ocelle")
