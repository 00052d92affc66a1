// SPDX-License-Identifier: BSD-3-Clause
#include "memberpointers.h"

#include <QMetaEnum>
#include <QtTest>

#include <ocelle/videodecoder.h>
#include <ocelle/videoencoder.h>
#include <palaver/qpvdecodecontrol.h>
#include <palaver/qpvencodecontrol.h>
#include <palaver/qpvencodedvideosink.h>
#include <palaver/qpvencodedvideosourcecontrol.h>

#include <type_traits>

using namespace Veltra::Ocelle;

namespace {

// Protected data, reached through classes derived from the two.
class EncoderData : public VideoEncoder
{
public:
    static int listenerOffset() { return offsetOf(&EncoderData::m_listener); }
    static int mutexOffset() { return offsetOf(&EncoderData::m_listenerMutex); }
};

class DecoderData : public VideoDecoder
{
public:
    static int listenerOffset() { return offsetOf(&DecoderData::m_listener); }
    static int mutexOffset() { return offsetOf(&DecoderData::m_listenerMutex); }
};

template <typename Enumeration>
int number(Enumeration value)
{
    return static_cast<int>(value);
}

constexpr int Word = sizeof(void *);

/*! The last virtual operation of QObject, which is protected there. */
class LastOfQObject : public QObject
{
public:
    static int slot() { return slotOf(&LastOfQObject::disconnectNotify); }
};

/*! How many slots stand before the operations of a class that Qt's control is the base of. */
int slotsOfQMediaControl()
{
    return LastOfQObject::slot();
}

} // namespace

class TestCodecContract : public QObject
{
    Q_OBJECT
private slots:
    void encoderConfig_isSevenNumbersOf32Bits()
    {
        QCOMPARE(offsetOf(&EncoderConfig::codecType), 0);
        QCOMPARE(offsetOf(&EncoderConfig::width), 4);
        QCOMPARE(offsetOf(&EncoderConfig::height), 8);
        QCOMPARE(offsetOf(&EncoderConfig::stride), 12);
        QCOMPARE(offsetOf(&EncoderConfig::sliceHeight), 16);
        QCOMPARE(offsetOf(&EncoderConfig::bitrate), 20);
        QCOMPARE(offsetOf(&EncoderConfig::frameRate), 24);
        QCOMPARE(int(sizeof(EncoderConfig)), 28);
        QVERIFY((std::is_same<decltype(EncoderConfig::codecType), std::int32_t>::value));
        QVERIFY((std::is_same<decltype(EncoderConfig::bitrate), std::int32_t>::value));
        QVERIFY(std::is_trivial<EncoderConfig>::value);
    }

    void decoderConfig_endsInTwoReservedWords()
    {
        QCOMPARE(offsetOf(&DecoderConfig::codecType), 0);
        QCOMPARE(offsetOf(&DecoderConfig::width), 4);
        QCOMPARE(offsetOf(&DecoderConfig::height), 8);
        QCOMPARE(offsetOf(&DecoderConfig::frameRate), 12);
        QCOMPARE(offsetOf(&DecoderConfig::reserved), 16);
        QCOMPARE(int(sizeof(DecoderConfig)), 32);
        QVERIFY(std::is_trivial<DecoderConfig>::value);
    }

    void metaData_isTypeThenTime()
    {
        using MetaData = QPVEncodedVideoFrame::MetaData;
        QCOMPARE(offsetOf(&MetaData::frameType), 0);
        QCOMPARE(offsetOf(&MetaData::timestamp), 8);
        QCOMPARE(int(sizeof(MetaData)), 16);
        QVERIFY((std::is_same<decltype(MetaData::timestamp), quint64>::value));
        QCOMPARE(int(sizeof(QPVEncodedVideoFrame::FrameType)), 4);
        QVERIFY(std::is_trivial<MetaData>::value);
    }

    void encodedFrame_isOnePointerAndNothingVirtual()
    {
        QCOMPARE(int(sizeof(QPVEncodedVideoFrame)), Word);
        QVERIFY(!std::is_polymorphic<QPVEncodedVideoFrame>::value);
        QVERIFY((std::is_constructible<QPVEncodedVideoFrame, const char *, unsigned long,
                                       const QPVEncodedVideoFrame::MetaData &>::value));
        QVERIFY((std::is_same<decltype(&QPVEncodedVideoFrame::data),
                              QByteArray (QPVEncodedVideoFrame::*)() const>::value));
        QVERIFY((std::is_same<decltype(&QPVEncodedVideoFrame::meta),
                              QPVEncodedVideoFrame::MetaData (QPVEncodedVideoFrame::*)()
                                      const>::value));
        QVERIFY(QMetaTypeId<QPVEncodedVideoFrame>::Defined);
    }

    void encoder_operationsKeepTheirSlots()
    {
        QVERIFY(std::has_virtual_destructor<VideoEncoder>::value); // slots 1 and 2
        QCOMPARE(slotOf(&VideoEncoder::initialize), 3);
        QCOMPARE(slotOf(&VideoEncoder::encode), 4);
        QCOMPARE(slotOf(&VideoEncoder::setBitrate), 5);
        QCOMPARE(slotOf(&VideoEncoder::setParameter), 6);
        QCOMPARE(slotOf(&VideoEncoder::encodeRGB), 7);
        QVERIFY(!isVirtual(&VideoEncoder::lockAndSetListener));
    }

    void encoderListener_operationsKeepTheirSlots()
    {
        QVERIFY(std::has_virtual_destructor<VideoEncoderListener>::value);
        QCOMPARE(slotOf(&VideoEncoderListener::onEncodedFrame), 3);
        QCOMPARE(slotOf(&VideoEncoderListener::onEncoderParameterChanged), 4);
        QCOMPARE(slotOf(&VideoEncoderListener::onEncoderError), 5);
        QCOMPARE(slotOf(&VideoEncoderListener::onEncoderEOS), 6);
        QCOMPARE(int(sizeof(VideoEncoderListener)), Word);
    }

    void decoder_operationsKeepTheirSlots()
    {
        QVERIFY(std::has_virtual_destructor<VideoDecoder>::value);
        QCOMPARE(slotOf(&VideoDecoder::initialize), 3);
        QCOMPARE(slotOf(&VideoDecoder::reserved4), 4);
        QCOMPARE(slotOf(&VideoDecoder::decode), 5);
        QCOMPARE(slotOf(&VideoDecoder::flush), 6);
        QCOMPARE(slotOf(&VideoDecoder::drain), 7);
        QCOMPARE(slotOf(&VideoDecoder::stop), 8);
        QVERIFY(!isVirtual(&VideoDecoder::lockAndSetListener));
    }

    void decoderListener_operationsKeepTheirSlots()
    {
        QVERIFY(std::has_virtual_destructor<VideoDecoderListener>::value);
        QCOMPARE(slotOf(&VideoDecoderListener::onDecodedYCbCrFrame), 3);
        QCOMPARE(slotOf(&VideoDecoderListener::onDecodedGraphicBuffer), 4);
        QCOMPARE(slotOf(&VideoDecoderListener::onDecoderParameterChanged), 5);
        QCOMPARE(slotOf(&VideoDecoderListener::onDecoderError), 6);
        QCOMPARE(slotOf(&VideoDecoderListener::onDecoderEOS), 7);
        QCOMPARE(int(sizeof(VideoDecoderListener)), Word);
    }

    void codecs_holdListenerThenMutex()
    {
        QCOMPARE(EncoderData::listenerOffset(), Word);
        QCOMPARE(EncoderData::mutexOffset(), 2 * Word);
        QCOMPARE(int(sizeof(VideoEncoder)), 2 * Word + int(sizeof(std::mutex)));
        QCOMPARE(DecoderData::listenerOffset(), Word);
        QCOMPARE(DecoderData::mutexOffset(), 2 * Word);
        QCOMPARE(int(sizeof(VideoDecoder)), 2 * Word + int(sizeof(std::mutex)));
    }

    void operations_haveTheContractsTypes()
    {
        QVERIFY((std::is_same<decltype(&VideoEncoder::initialize),
                              bool (VideoEncoder::*)(EncoderConfig)>::value));
        QVERIFY((std::is_same<decltype(&VideoEncoder::encode),
                              bool (VideoEncoder::*)(std::shared_ptr<YCbCrFrame>, bool)>::value));
        QVERIFY((std::is_same<decltype(&VideoEncoder::encodeRGB),
                              bool (VideoEncoder::*)(std::shared_ptr<RGBFrame>, bool)>::value));
        QVERIFY((std::is_same<decltype(&VideoEncoder::setParameter),
                              bool (VideoEncoder::*)(VideoEncoderParameter,
                                                     const std::string &)>::value));
        QVERIFY((std::is_same<decltype(&VideoEncoderListener::onEncodedFrame),
                              void (VideoEncoderListener::*)(unsigned char *, unsigned long,
                                                             unsigned long, FrameType)>::value));
        QVERIFY((std::is_same<decltype(&VideoDecoder::decode),
                              bool (VideoDecoder::*)(const unsigned char *, std::uint64_t,
                                                     std::uint64_t, FrameType, void (*)(void *),
                                                     void *)>::value));
        QVERIFY((std::is_same<decltype(&VideoDecoder::initialize),
                              bool (VideoDecoder::*)(DecoderConfig)>::value));
    }

    void enumerations_haveTheLibrarysValues()
    {
        QCOMPARE(int(sizeof(VideoEncoderParameter)), 4);
        QCOMPARE(int(sizeof(VideoDecoderParameter)), 4);
        QCOMPARE(number(VideoEncoderParameter::BitrateModeParameter), 1);
        QCOMPARE(number(VideoEncoderParameter::RotationParameter), 2);
        QCOMPARE(number(VideoEncoderParameter::MirrorVerticalParameter), 4);
        QCOMPARE(number(VideoDecoderParameter::ViewportParameter), 1);
        QCOMPARE(number(FrameType::Key), 0);
        QCOMPARE(int(sizeof(QPVEncoder::Status)), 4);
        QCOMPARE(number(QPVEncoder::UnloadedStatus), 1);
        QCOMPARE(number(QPVEncoder::LoadedStatus), 3);
        QCOMPARE(number(QPVEncoder::StoppingStatus), 4);
        QCOMPARE(number(QPVEncoder::StartingStatus), 5);
        QCOMPARE(number(QPVEncoder::ActiveStatus), 6);
        QCOMPARE(number(QPVEncoder::NoError), 0);
        QCOMPARE(number(QPVEncoder::ResourceError), 1);
        QCOMPARE(number(QPVEncoder::FormatError), 2);
        QCOMPARE(number(QPVEncoder::SinkError), 3);
        QCOMPARE(number(QPVEncoder::EncoderError), 4);
        QCOMPARE(int(sizeof(QPVEncoder::Error)), 4);
        QCOMPARE(int(sizeof(QPVDecoder::Status)), 4);
        QCOMPARE(number(QPVDecoder::UnloadedStatus), 1);
        QCOMPARE(number(QPVDecoder::LoadedStatus), 4);
        QCOMPARE(number(QPVDecoder::StandbyStatus), 5);
        QCOMPARE(number(QPVDecoder::StoppingStatus), 6);
        QCOMPARE(number(QPVDecoder::StartingStatus), 7);
        QCOMPARE(number(QPVDecoder::ActiveStatus), 8);
        QCOMPARE(int(sizeof(QPVDecoder::Error)), 4);
        QCOMPARE(number(QPVDecoder::NoError), 0);
        QCOMPARE(number(QPVDecoder::ResourceError), 1);
        QCOMPARE(number(QPVDecoder::DecodeError), 3);
    }

    void encodeControl_operationsFollowThoseOfQObject()
    {
        const int before = slotsOfQMediaControl();
        using Control = QPVEncodeControl;
        QVERIFY((std::is_base_of<QMediaControl, Control>::value));
        QCOMPARE(slotOf(&Control::supportedCodecs), before + 1);
        QCOMPARE(slotOf(&Control::supportedPixelFormats), before + 2);
        QCOMPARE(slotOf(&Control::status), before + 3);
        QCOMPARE(slotOf(&Control::start), before + 4);
        QCOMPARE(slotOf(&Control::drain), before + 5);
        QCOMPARE(slotOf(&Control::flush), before + 6);
        QCOMPARE(slotOf(&Control::stop), before + 7);
        QCOMPARE(slotOf(&Control::encode), before + 8);
        QCOMPARE(sizeof(Control), sizeof(QMediaControl));
    }

    void decodeControl_operationsFollowThoseOfQObject()
    {
        const int before = slotsOfQMediaControl();
        using Control = QPVDecodeControl;
        QVERIFY((std::is_base_of<QMediaControl, Control>::value));
        QCOMPARE(slotOf(&Control::supportedCodecs), before + 1);
        QCOMPARE(slotOf(&Control::isFormatSupported), before + 2);
        QCOMPARE(slotOf(&Control::start), before + 3);
        QCOMPARE(slotOf(&Control::codecSettings), before + 4);
        QCOMPARE(slotOf(&Control::outputFormat), before + 5);
        QCOMPARE(slotOf(&Control::decode), before + 6);
        QCOMPARE(slotOf(&Control::drain), before + 7);
        QCOMPARE(slotOf(&Control::flush), before + 8);
        QCOMPARE(slotOf(&Control::stop), before + 9);
        QCOMPARE(slotOf(&Control::status), before + 10);
        QCOMPARE(sizeof(Control), sizeof(QMediaControl));
    }

    void signals_haveTheContractsSignatures()
    {
        const QMetaObject &encode = QPVEncodeControl::staticMetaObject;
        for (const char *signal :
             { "statusChanged(QPVEncoder::Status)", "error(QPVEncoder::Error,QString)",
               "encodedVideoFrame(QPVEncodedVideoFrame)", "endOfStream()" })
            QVERIFY2(encode.indexOfSignal(signal) >= 0, signal);
        const QMetaObject &decode = QPVDecodeControl::staticMetaObject;
        for (const char *signal :
             { "statusChanged(QPVDecoder::Status)", "error(QPVDecoder::Error,QString)",
               "outputFormatChanged(QVideoSurfaceFormat)" })
            QVERIFY2(decode.indexOfSignal(signal) >= 0, signal);
    }

    void source_operationsKeepTheirSlots()
    {
        QVERIFY(std::has_virtual_destructor<QPVSource>::value);
        QCOMPARE(slotOf(&QPVSource::addSink), 3);
        QCOMPARE(slotOf(&QPVSource::removeSink), 4);
        QCOMPARE(slotOf(&QPVSource::sinkActiveChanged), 5);
        QCOMPARE(slotOf(&QPVSource::sinkError), 6);
        QCOMPARE(int(sizeof(QPVSource)), Word);
        QVERIFY((std::is_base_of<QPVSource, QPVEncodedVideoSourceControl>::value));
        QVERIFY((std::is_base_of<QMediaControl, QPVEncodedVideoSourceControl>::value));
        QCOMPARE(sizeof(QPVEncodedVideoSourceControl), sizeof(QMediaControl) + sizeof(QPVSource));
    }

    void sink_operationsKeepTheirSlots()
    {
        QVERIFY(std::has_virtual_destructor<QPVSink>::value);
        QCOMPARE(int(sizeof(QPVSink)), Word);
        QVERIFY((std::is_base_of<QPVSink, QPVEncodedVideoSink>::value));
        QCOMPARE(slotOf(&QPVEncodedVideoSink::release), 3);
        QCOMPARE(slotOf(&QPVEncodedVideoSink::isFormatSupported), 4);
        QCOMPARE(slotOf(&QPVEncodedVideoSink::start), 5);
        QCOMPARE(slotOf(&QPVEncodedVideoSink::present), 6);
        QCOMPARE(slotOf(&QPVEncodedVideoSink::finish), 7);
        QCOMPARE(slotOf(&QPVEncodedVideoSink::stop), 8);
        QCOMPARE(int(sizeof(QPVEncodedVideoSink)), Word);
    }

    void interfaceIds_areThoseOfTheExchangeLibrary()
    {
        QCOMPARE(QByteArray(QPVEncodeControl_iid), QByteArray("veltra.palaver.encodecontrol/1.0"));
        QCOMPARE(QByteArray(QPVDecodeControl_iid), QByteArray("veltra.palaver.decodecontrol/1.0"));
        QCOMPARE(QByteArray(QPVEncodedVideoSourceControl_iid),
                 QByteArray("veltra.palaver.encodedvideosourcecontrol/1.0"));
    }
};

QTEST_GUILESS_MAIN(TestCodecContract)
#include "tst_codeccontract.moc"
