// SPDX-License-Identifier: BSD-3-Clause
#include "scriptedencoders.h"

#include <deque>

using namespace Veltra::Ocelle;

namespace {
class ScriptedEncoder final : public PictureEncoder
{
public:
    explicit ScriptedEncoder(ScriptedEncoders *script)
        : m_script(script)
    {
        ++m_script->alive;
    }
    ~ScriptedEncoder() override { --m_script->alive; }

    bool takes(PictureLayout) const override { return true; }
    bool takesOddSizes() const override { return true; }

    bool open(const EncoderSettings &settings, std::string *error) override
    {
        m_held.clear();
        m_isFirst = true;
        *error = m_script->openError;
        m_script->opened.push_back(settings);
        return error->empty();
    }

    bool encode(const PictureView &, std::int64_t index, bool keyFrame, const UnitFunction &onUnit,
                std::string *error) override
    {
        *error = m_script->encodeError;
        if (!error->empty())
            return false;
        m_script->keyFrames.push_back(keyFrame);
        m_held.push_back({ index, keyFrame || m_isFirst });
        m_isFirst = false;
        while (int(m_held.size()) > m_script->delay)
            putOut(onUnit);
        return true;
    }

    bool finish(const UnitFunction &onUnit, std::string *) override
    {
        ++m_script->finished;
        while (!m_held.empty())
            putOut(onUnit);
        return true;
    }

    BitrateChange setBitrate(int bitrate, std::string *error) override
    {
        m_script->bitrates.push_back(bitrate);
        *error = m_script->bitrateError;
        if (!error->empty())
            return BitrateChange::Failed;
        return m_script->reopensForBitrate ? BitrateChange::NeedsReopen : BitrateChange::Done;
    }

private:
    struct Held
    {
        std::int64_t index;
        bool isKeyFrame;
    };

    void putOut(const UnitFunction &onUnit)
    {
        const Held held = m_held.front();
        m_held.pop_front();
        unsigned char byte = static_cast<unsigned char>(held.index);
        onUnit({ &byte, 1, held.index, held.isKeyFrame });
    }

    ScriptedEncoders *const m_script; // outlives it
    std::deque<Held> m_held;
    bool m_isFirst = true;
};
} // namespace

ScriptedEncoders::ScriptedEncoders(CodecType type, const std::string &name, bool isHardware,
                                   int mostInstances)
    : EncoderFactory({ type, true, name, 0, mostInstances, isHardware })
{
}

bool ScriptedEncoders::isAvailable()
{
    ++availableCalls;
    return available;
}

std::unique_ptr<PictureEncoder> ScriptedEncoders::create()
{
    return std::make_unique<ScriptedEncoder>(this);
}
