// SPDX-License-Identifier: BSD-3-Clause
#pragma once

/*!
 * Makes the types of the controls' signals known to Qt, so that they cross threads. The two Status
 * types are left to the back end. Any thread, as often as wanted.
 */
void registerPalaverMetaTypes();
