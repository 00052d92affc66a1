// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "fakecameramanager.h"
#include "fakecodecmanager.h"
#include "fakevideooutput.h"

/*!
 * The platform of one test: the two managers, handed out by the library's factories while this
 * lives. Building it empties the call log and the list of outputs.
 *
 * Threads: built and destroyed on the test's thread, one at a time. The factories are called
 *          "factory" in the log.
 */
class FakePlatform
{
public:
    FakePlatform();
    ~FakePlatform();
    FakePlatform(const FakePlatform &) = delete;
    FakePlatform &operator=(const FakePlatform &) = delete;

    FakeCameraManager cameras;
    FakeCodecManager codecs;
};
