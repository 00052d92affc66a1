// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <palaver/qpvencoder.h>

/*! The values of the lists of statuses, in the order of an encoder's life. */
namespace Statuses {
constexpr int Unloaded = QPVEncoder::UnloadedStatus;
constexpr int Loaded = QPVEncoder::LoadedStatus;
constexpr int Stopping = QPVEncoder::StoppingStatus;
constexpr int Starting = QPVEncoder::StartingStatus;
constexpr int Active = QPVEncoder::ActiveStatus;
} // namespace Statuses
