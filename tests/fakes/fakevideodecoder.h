// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <ocelle/videodecoder.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

class FakeDecoderScript;

/*!
 * One decoder that does what its script says. It is called "decoder N" in the log, N counting from 1
 * for each codec manager. It releases every block exactly once: at the end of decode(), or where it
 * keeps them, when told to or on destruction.
 *
 * Threads: as the contract of the decoder. A listener is called with no lock held, so that several
 *          library threads may be inside of it at once.
 */
class FakeVideoDecoder : public Veltra::Ocelle::VideoDecoder
{
public:
    FakeVideoDecoder(int number, std::shared_ptr<FakeDecoderScript> script);
    ~FakeVideoDecoder() override;

    bool initialize(Veltra::Ocelle::DecoderConfig config) override;
    bool decode(const unsigned char *data, std::uint64_t size, std::uint64_t timestamp,
                Veltra::Ocelle::FrameType type, void (*release)(void *), void *releaseArg) override;
    void flush() override;
    void drain() override;
    void stop() override;

    // Tell the listener, on the calling thread; false where there is none
    bool deliver(std::shared_ptr<Veltra::Ocelle::GraphicBuffer> buffer);
    bool deliver(const Veltra::Ocelle::YCbCrFrame *frame);
    bool changeParameter(Veltra::Ocelle::VideoDecoderParameter parameter, const std::string &value);
    bool fail(const std::string &message);
    bool endStream();

    /*! What it was configured with last. */
    Veltra::Ocelle::DecoderConfig config() const;
    /*! What is in the blocks it keeps, oldest first. */
    QList<QByteArray> keptBytes() const;
    /*! Releases the blocks it keeps, on the calling thread. */
    void releaseBlocks();

private:
    struct Block
    {
        int size; // bytes
        void (*release)(void *);
        void *arg;
    };

    void log(const QString &what) const;
    template <typename Function>
    bool tell(Function function);

    const std::shared_ptr<FakeDecoderScript> m_script;
    const QString m_object;

    mutable std::mutex m_mutex; // guards all below; never held while calling out
    Veltra::Ocelle::DecoderConfig m_config {};
    std::vector<Block> m_blocks; // kept
};
