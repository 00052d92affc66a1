// SPDX-License-Identifier: BSD-3-Clause
#include "ocelleencodelog.h"

Q_LOGGING_CATEGORY(qLcEncode, "veltra.palaver.encoder.ocelle")
