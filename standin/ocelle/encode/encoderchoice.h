// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "encoderfactory.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace Veltra {
namespace Ocelle {

/*!
 * The codec of one encoder: of those that can do the job the first that opens. What does not is
 * left behind for good, with one line on standard error that says which was taken instead and why.
 *
 * Threads: one at a time.
 */
class EncoderChoice
{
public:
    /*! \a candidates are of one kind, the preferred one first. */
    explicit EncoderChoice(std::vector<std::shared_ptr<EncoderFactory>> candidates);
    ~EncoderChoice();

    /*! Opens the codec anew, or another one in its place. */
    bool open(const EncoderSettings &settings, std::string *error);

    /*! Null before open() and after it has failed. */
    PictureEncoder *encoder() const { return m_encoder.get(); }

private:
    bool tryCandidate(EncoderFactory &candidate, const EncoderSettings &settings,
                      std::string *error);

    const std::vector<std::shared_ptr<EncoderFactory>> m_candidates;
    std::size_t m_index = 0; // of the one in use
    InstanceCount::Token m_token;
    std::unique_ptr<PictureEncoder> m_encoder;
};

} // namespace Ocelle
} // namespace Veltra
