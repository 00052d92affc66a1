// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "finding.h"

#include <QProcessEnvironment>

namespace Doctor {

/*! Looks for values of \a environment that keep an application from its cameras, or are misspelt. */
Findings examineEnvironment(const QProcessEnvironment &environment);

} // namespace Doctor
