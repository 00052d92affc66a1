// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QMutex>
#include <QWaitCondition>

#include <ocelle/videoencoder.h>

#include <atomic>
#include <string>

/*!
 * What the platform's encoders call, and what hands their calls on to the session for as long as
 * there is one.
 *
 * An encoder lives for as long as the platform holds it, and may call its listener from its own
 * destructor, when nobody can detach it any more. Nothing tells when the last call is over. So a
 * listener, some hundred bytes for each session, stays until the process ends.
 *
 * Threads: any.
 * Owner:   itself.
 */
class OcelleEncodeListener final : public Veltra::Ocelle::VideoEncoderListener
{
public:
    /*! Hands on to \a target until it is closed. */
    static OcelleEncodeListener *create(Veltra::Ocelle::VideoEncoderListener *target);

    OcelleEncodeListener(const OcelleEncodeListener &) = delete;
    OcelleEncodeListener &operator=(const OcelleEncodeListener &) = delete;

    /*! Waits for calls that other threads are in; those that come later end here. */
    void close();

    void onEncodedFrame(unsigned char *data, unsigned long size, unsigned long timestamp,
                        Veltra::Ocelle::FrameType type) override;
    void onEncoderParameterChanged(Veltra::Ocelle::VideoEncoderParameter parameter,
                                   const std::string &value) override;
    void onEncoderError(const std::string &message) override;
    void onEncoderEOS() override;

private:
    class Call;

    explicit OcelleEncodeListener(Veltra::Ocelle::VideoEncoderListener *target);

    // Who comes in is counted first and looks at the target then; closing does it the other way round.
    std::atomic<Veltra::Ocelle::VideoEncoderListener *> m_target; // null once closed
    std::atomic<int> m_calls { 0 };                               // that are inside
    QMutex m_mutex;                                               // for the wait for these alone
    QWaitCondition m_ended;
};
