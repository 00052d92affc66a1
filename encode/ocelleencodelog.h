// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QLoggingCategory>

Q_DECLARE_LOGGING_CATEGORY(qLcEncode) // "veltra.palaver.encoder.ocelle"
