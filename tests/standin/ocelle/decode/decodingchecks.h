// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "decodefeeder.h"
#include "decodinglistener.h"

#include <vector>

/*! The number in each picture; -1 where there is none. */
std::vector<int> numbers(const std::vector<RawPicture> &pictures);
/*! The numbers from \a from up to but without \a to. */
std::vector<int> range(int from, int to);

bool isEqual(const RawPicture &one, const RawPicture &other);
bool isEqual(const std::vector<RawPicture> &one, const std::vector<RawPicture> &other);

/*!
 * What a decoder of that kind makes of \a units up to a drain. A block that is not given back once
 * is among the errors.
 */
DecodingListener decoded(const DecoderWish &wish, const std::vector<MediaUnit> &units);
