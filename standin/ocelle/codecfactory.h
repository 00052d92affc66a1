// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "instancecount.h"

#include <ocelle/codecmanager.h>

#include <utility>

namespace Veltra {
namespace Ocelle {

/*!
 * One encoder or decoder as the codec manager lists it.
 *
 * Threads: any, several at a time.
 */
class CodecFactory
{
public:
    virtual ~CodecFactory() = default;

    /*! What the codec manager says of it. */
    const VideoCodecInfo &info() const { return m_info; }
    /*! A token from here has to be held while one of its codecs runs. */
    InstanceCount &instances() { return m_instances; }

    /*! Whether it works on this machine, which the first call tries and which may take time. */
    virtual bool isAvailable() = 0;

protected:
    explicit CodecFactory(VideoCodecInfo info)
        : m_info(std::move(info))
        , m_instances(m_info.maxInstances)
    {
    }

private:
    const VideoCodecInfo m_info;
    InstanceCount m_instances;
};

} // namespace Ocelle
} // namespace Veltra
