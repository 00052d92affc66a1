// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "testpictures.h"

#include <QString>

#include <ocelle/videoencoder.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace Compliance {

class Session;

/*! One compressed picture. */
struct Unit
{
    std::string data;
    std::uint64_t timestamp;
    Veltra::Ocelle::FrameType type;
};

/*!
 * Listens to an encoder.
 *
 * Threads: the callbacks on threads of the library; the rest on any.
 * Owner:   the Session.
 */
class EncoderProbe : public Veltra::Ocelle::VideoEncoderListener
{
public:
    explicit EncoderProbe(Session *session);

    void onEncodedFrame(unsigned char *data, unsigned long size, unsigned long timestamp,
                        Veltra::Ocelle::FrameType type) override;
    void onEncoderParameterChanged(Veltra::Ocelle::VideoEncoderParameter parameter,
                                   const std::string &value) override;
    void onEncoderError(const std::string &message) override;
    void onEncoderEOS() override;

    void forbid(); // callbacks are not to come any more
    int forbidden() const;
    std::vector<Unit> units() const;
    int unitCount() const;
    QString error() const; // the last one

private:
    void note();

    Session *const m_session;
    mutable std::mutex m_mutex; // guards the members below
    std::vector<Unit> m_units;
    bool m_isForbidden = false;
    int m_forbidden = 0;
    QString m_error;
};

/*!
 * An encoder as the back end uses one, dropped at the end, whatever happens between.
 *
 * Threads: the check's.
 */
class EncoderRun
{
public:
    /*! That many pictures may stay inside of an encoder; none has to be put out before. */
    static constexpr int MostInside = 4;

    EncoderRun(Session *session, Veltra::Ocelle::CodecType type);
    ~EncoderRun();
    EncoderRun(const EncoderRun &) = delete;
    EncoderRun &operator=(const EncoderRun &) = delete;

    bool create(); // and has the probe listen
    bool initialize(int bitRate = 1000000);
    bool initialize(const Veltra::Ocelle::EncoderConfig &config);
    bool setParameter(Veltra::Ocelle::VideoEncoderParameter parameter, const std::string &value);
    void setBitrate(int bitRate);
    /*! Hands a picture over and waits until no more than MostInside are inside. */
    bool encode(std::uint32_t number, std::int64_t timestamp, bool keyFrame = false,
                bool noise = false);
    bool encode(std::shared_ptr<Veltra::Ocelle::YCbCrFrame> frame);
    /*! The same as the first, with a picture in RGB. */
    bool encodeRgb(std::uint32_t number, std::int64_t timestamp, bool keyFrame);
    int taken() const { return m_taken; } // pictures of the two that wait
    void detach();                        // takes the listener away
    void drop();

    /*! What the back end would configure for test pictures. */
    Veltra::Ocelle::EncoderConfig config(int bitRate) const;
    EncoderProbe &probe() { return *m_probe; }
    const PictureCount &pictures() const { return *m_pictures; }
    /*! Drops the encoder and waits for its pictures; empty where all of them are given back. */
    QString keepingProblem();
    QString trouble() const; // " (what the encoder tells)"

private:
    bool waitFor(bool isTaken);

    Session *const m_session;
    const Veltra::Ocelle::CodecType m_type;
    EncoderProbe *const m_probe;
    const std::shared_ptr<PictureCount> m_pictures = std::make_shared<PictureCount>();
    std::shared_ptr<Veltra::Ocelle::VideoEncoder> m_encoder;
    bool m_isAttached = false; // the probe
    int m_taken = 0;
};

/*! The time stamp of picture \a number at about the usual rate, microseconds. */
std::int64_t stampOf(int number);

/*!
 * So many test pictures, numbered from 0, compressed by the platform itself; \a keys are requested as
 * key frames, the first among them. Fewer where some stay inside; empty where it cannot be done, and
 * \a why says so.
 */
std::vector<Unit> makeStream(Session *session, Veltra::Ocelle::CodecType type, int count,
                             QString *why, const std::set<int> &keys = { 0 });

} // namespace Compliance
