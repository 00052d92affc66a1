// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QLoggingCategory>

namespace Veltra {
namespace Ocelle {

Q_DECLARE_LOGGING_CATEGORY(lcVideoOutput) // "ocelle.videooutput"

} // namespace Ocelle
} // namespace Veltra
