// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <ocelle/codecmanager.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace Veltra {
namespace Ocelle {

/*! What the headers of one compressed frame tell. */
struct UnitReport
{
    bool hasPicture = false;   // else it is parameters or side information
    std::size_t headSize = 0;  // bytes before the picture; all where there is none
    unsigned parameters = 0;   // kinds of parameters among these, a bit for each
    bool isKey = false;        // decoding can begin here
    bool reorders = false;     // pictures may come in another order than they are shown in
    bool endsSequence = false; // nothing after it refers to anything up to here
    bool endsStream = false;
    bool isSelfContained = false; // it has every kind of parameters
    std::string gap;     // what is missing before it, as text; empty where nothing is known to be
    std::string problem; // why it cannot be decoded at all; empty where it may be
};

/*!
 * Reads just enough of a stream's headers to know where decoding can begin, what is missing and
 * what to keep from the decoder. Remembers the parameters of the stream.
 *
 * Threads: one at a time.
 * Errors:  UnitReport's texts are for people and do not name the codec.
 */
class StreamScan
{
public:
    virtual ~StreamScan() = default;

    /*! Looks at the next compressed frame. Its bytes are borrowed for the call. */
    virtual UnitReport examine(const std::uint8_t *data, std::size_t size) = 0;
    /*! What comes next follows on nothing that was before. The parameters stay. */
    virtual void restart() {}

    /*! Null for an unknown kind. */
    static std::unique_ptr<StreamScan> create(CodecType type);

protected:
    /*! The problem with pictures of that size; empty where there is none. */
    static std::string sizeProblem(std::uint64_t width, std::uint64_t height);
};

} // namespace Ocelle
} // namespace Veltra
