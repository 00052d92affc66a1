// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "encoderrun.h"
#include "pictureviewer.h"

#include <QRect>
#include <QString>

#include <ocelle/videodecoder.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

namespace Compliance {

class Session;

/*!
 * Listens to a decoder and looks at its pictures, those in buffers with the session's viewer.
 *
 * Threads: the callbacks on threads of the library; the rest on any.
 * Owner:   the Session.
 */
class DecoderProbe : public Veltra::Ocelle::VideoDecoderListener
{
public:
    explicit DecoderProbe(Session *session);

    void onDecodedYCbCrFrame(const Veltra::Ocelle::YCbCrFrame *frame) override;
    void onDecodedGraphicBuffer(std::shared_ptr<Veltra::Ocelle::GraphicBuffer> buffer) override;
    void onDecoderParameterChanged(Veltra::Ocelle::VideoDecoderParameter parameter,
                                   const std::string &value) override;
    void onDecoderError(const std::string &message) override;
    void onDecoderEOS() override;

    void welcome(); // forgets what came so far, and what was forbidden
    void forbid();  // callbacks are not to come any more
    int forbidden() const;
    int pictures() const; // that were handed over
    int errors() const;
    QString error() const; // the last one
    /*! What was seen of the pictures; waits for those that are on their way to the viewer. */
    std::vector<SeenPicture> seen();

private:
    void note();

    Session *const m_session;
    mutable std::mutex m_mutex;      // guards the members below
    std::vector<SeenPicture> m_seen; // of those not in buffers
    QRect m_viewport;
    int m_pictures = 0;
    int m_buffers = 0;
    int m_errors = 0;
    bool m_isForbidden = false;
    int m_forbidden = 0;
    QString m_error;
};

/*! How often one block of compressed bytes was given back. */
struct Block
{
    std::string data;
    std::atomic<int> released { 0 };
};

/*!
 * A decoder as the back end uses one, dropped at the end, whatever happens between.
 *
 * Threads: the check's.
 */
class DecoderRun
{
public:
    DecoderRun(Session *session, Veltra::Ocelle::CodecType type);
    ~DecoderRun();
    DecoderRun(const DecoderRun &) = delete;
    DecoderRun &operator=(const DecoderRun &) = delete;

    bool create(); // and has the probe listen
    bool initialize();
    bool initialize(const Veltra::Ocelle::DecoderConfig &config);
    bool start() { return create() && initialize(); }
    bool decode(const Unit &unit);
    bool decodeAll(const std::vector<Unit> &units);
    void flush();
    void drain();
    void stop();
    void detach(); // takes the listener away
    void drop();

    Veltra::Ocelle::DecoderConfig config() const;
    DecoderProbe &probe() { return *m_probe; }
    const std::vector<Block *> &blocks() const { return m_blocks; } // handed over, oldest first
    QString trouble() const;                                        // " (what the decoder tells)"

private:
    Session *const m_session;
    const Veltra::Ocelle::CodecType m_type;
    DecoderProbe *const m_probe;
    std::vector<Block *> m_blocks; // the session's
    std::shared_ptr<Veltra::Ocelle::VideoDecoder> m_decoder;
    bool m_isInitialized = false;
    bool m_isAttached = false; // the probe
};

} // namespace Compliance
