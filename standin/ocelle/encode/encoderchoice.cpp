// SPDX-License-Identifier: BSD-3-Clause
#include "encoderchoice.h"

#include "log.h"

#include <utility>

namespace Veltra {
namespace Ocelle {

EncoderChoice::EncoderChoice(std::vector<std::shared_ptr<EncoderFactory>> candidates)
    : m_candidates(std::move(candidates))
{
}

EncoderChoice::~EncoderChoice() = default;

bool EncoderChoice::open(const EncoderSettings &settings, std::string *error)
{
    error->clear();
    std::size_t index = m_encoder ? m_index : 0;
    std::string failures; // of the ones before
    for (; index < m_candidates.size(); ++index) {
        EncoderFactory &candidate = *m_candidates[index];
        const std::string &name = candidate.info().codecName;
        if (tryCandidate(candidate, settings, error)) {
            if (!failures.empty())
                printLine("taking " + name + ", since " + failures);
            m_index = index;
            return true;
        }
        failures += (failures.empty() ? "" : ", ") + name + " does not open (" + *error + ")";
    }
    return false;
}

bool EncoderChoice::tryCandidate(EncoderFactory &candidate, const EncoderSettings &settings,
                                 std::string *error)
{
    if (!m_encoder) {
        m_token = candidate.instances().take();
        if (!m_token) {
            *error = "all " + std::to_string(candidate.instances().most()) + " instances of " +
                     candidate.info().codecName + " are in use";
            return false;
        }
        m_encoder = candidate.create();
    }
    if (m_encoder->open(settings, error))
        return true;
    m_encoder.reset();
    m_token.reset();
    return false;
}

} // namespace Ocelle
} // namespace Veltra
