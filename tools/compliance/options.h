// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QString>

namespace Compliance {

/*! How long the checks wait. */
struct Patience
{
    int call = 10000; // ms, for any one call of the platform to return
    int wait = 5000;  // ms, for a picture that has to come
    int quiet = 300;  // ms, in which nothing may come
    int window = 500; // ms, over which a rate is measured at least
};

/*! What is checked. */
struct Options
{
    QString only;    // a pattern of check names, with * and ?; empty for all
    QString device;  // the same of the ids of cameras and codecs
    int hotPlug = 0; // seconds to wait for a camera that comes and one that goes; 0 for not at all
    Patience patience;
};

} // namespace Compliance
