// SPDX-License-Identifier: BSD-3-Clause
#include "videooutputlog.h"

namespace Veltra {
namespace Ocelle {

Q_LOGGING_CATEGORY(lcVideoOutput, "ocelle.videooutput")

} // namespace Ocelle
} // namespace Veltra
