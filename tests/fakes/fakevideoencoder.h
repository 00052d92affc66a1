// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QString>

#include <ocelle/videoencoder.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

class FakeEncoderScript;

/*!
 * One encoder that does what its script says. It is called "encoder N" in the log, N counting from 1
 * for each codec manager.
 *
 * Threads: as the contract of the encoder. A listener is called with the listener's lock held, so
 *          that lockAndSetListener() waits for a call that is under way.
 */
class FakeVideoEncoder : public Veltra::Ocelle::VideoEncoder
{
public:
    FakeVideoEncoder(int number, std::shared_ptr<FakeEncoderScript> script);
    ~FakeVideoEncoder() override;

    bool initialize(Veltra::Ocelle::EncoderConfig config) override;
    bool encode(std::shared_ptr<Veltra::Ocelle::YCbCrFrame> frame, bool keyFrame) override;
    bool setBitrate(int bitrate) override;
    bool setParameter(Veltra::Ocelle::VideoEncoderParameter parameter,
                      const std::string &value) override;
    bool encodeRGB(std::shared_ptr<Veltra::Ocelle::RGBFrame> frame, bool keyFrame) override;

    // Tell the listener, on the calling thread; false where there is none
    bool deliver(const std::string &data, unsigned long timestamp,
                 Veltra::Ocelle::FrameType type = Veltra::Ocelle::FrameType::Delta);
    bool fail(const std::string &message);
    bool endStream();
    bool changeParameter(Veltra::Ocelle::VideoEncoderParameter parameter, const std::string &value);
    bool hasListener();

    // What came in last
    Veltra::Ocelle::EncoderConfig config() const;
    Veltra::Ocelle::YCbCrFrame picture() const; // its pointers hold while it is kept
    Veltra::Ocelle::RGBFrame rgbPicture() const;

    /*! Lets the pictures go, on the calling thread. */
    void dropPictures();

private:
    void log(const QString &what) const;
    bool take(std::shared_ptr<void> picture);
    template <typename Function>
    bool tell(Function function);

    const std::shared_ptr<FakeEncoderScript> m_script;
    const QString m_object;

    mutable std::mutex m_mutex; // guards all below; never held while calling out
    Veltra::Ocelle::EncoderConfig m_config {};
    Veltra::Ocelle::YCbCrFrame m_picture {};
    Veltra::Ocelle::RGBFrame m_rgbPicture {};
    std::vector<std::shared_ptr<void>> m_pictures;
};
