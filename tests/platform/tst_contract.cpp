// SPDX-License-Identifier: BSD-3-Clause
#include "memberpointers.h"

#include <QtTest>

#include <ocelle/camera.h>
#include <ocelle/cameramanager.h>
#include <ocelle/codecmanager.h>
#include <ocelle/frames.h>
#include <ocelle/videooutputqt5.h>
#include <palaver/qpvmediaservicecodecinfointerface.h>
#include <palaver/qpvrawvideosourcecontrol.h>

#include <type_traits>

using namespace Veltra::Ocelle;

// Two classes' protected data, reached through classes derived from them.
namespace {

class ManagerData : public CameraManager
{
public:
    static int listenerOffset() { return offsetOf(&ManagerData::m_listener); }
    static int mutexOffset() { return offsetOf(&ManagerData::m_listenerMutex); }
    static constexpr bool isStdMutex =
            std::is_same<decltype(ManagerData::m_listenerMutex), std::mutex>::value;
};

class CameraData : public Camera
{
public:
    static int listenerOffset() { return offsetOf(&CameraData::m_listener); }
    static int mutexOffset() { return offsetOf(&CameraData::m_listenerMutex); }
    static constexpr bool isStdMutex =
            std::is_same<decltype(CameraData::m_listenerMutex), std::mutex>::value;
};

template <typename Enumeration, typename Underlying>
constexpr bool isStoredAs()
{
    return std::is_same<typename std::underlying_type<Enumeration>::type, Underlying>::value;
}

template <typename Enumeration>
quint32 number(Enumeration value)
{
    return static_cast<quint32>(value);
}

constexpr int Word = sizeof(void *);
constexpr int String = sizeof(std::string);

} // namespace

class TestContract : public QObject
{
    Q_OBJECT
private slots:
    void cameraInfo_hasItsSixFieldsInPlace()
    {
        QCOMPARE(offsetOf(&CameraInfo::id), 0);
        QCOMPARE(offsetOf(&CameraInfo::name), String);
        QCOMPARE(offsetOf(&CameraInfo::extra1), 2 * String);
        QCOMPARE(offsetOf(&CameraInfo::facing), 3 * String);
        QCOMPARE(offsetOf(&CameraInfo::mountAngle), 3 * String + 4);
        QCOMPARE(offsetOf(&CameraInfo::extra2), 3 * String + 8);
        QCOMPARE(int(sizeof(CameraInfo)), 4 * String + 8);
        QVERIFY((std::is_same<decltype(CameraInfo::facing), CameraFacing>::value));
        QVERIFY((std::is_same<decltype(CameraInfo::mountAngle), std::int32_t>::value));
        QVERIFY(std::is_copy_constructible<CameraInfo>::value);
        QVERIFY(std::is_copy_assignable<CameraInfo>::value);
        QVERIFY(std::is_aggregate<CameraInfo>::value);
    }

    void cameraInfo_valueInitialised_standsForAMissingCamera()
    {
        const CameraInfo info {};
        QVERIFY(info.id.empty() && info.name.empty() && info.extra1.empty() && info.extra2.empty());
        QCOMPARE(number(info.facing), 0U);
        QCOMPARE(info.mountAngle, 0);
    }

    void cameraCapability_isThreeNumbersOf32Bits()
    {
        QCOMPARE(offsetOf(&CameraCapability::width), 0);
        QCOMPARE(offsetOf(&CameraCapability::height), 4);
        QCOMPARE(offsetOf(&CameraCapability::frameRate), 8);
        QCOMPARE(int(sizeof(CameraCapability)), 12);
        QVERIFY((std::is_same<decltype(CameraCapability::frameRate), std::uint32_t>::value));
        QVERIFY(std::is_trivial<CameraCapability>::value);
    }

    void videoCodecInfo_hasItsSixFieldsInPlace()
    {
        QCOMPARE(offsetOf(&VideoCodecInfo::type), 0);
        QCOMPARE(offsetOf(&VideoCodecInfo::isEncoder), 4);
        QCOMPARE(offsetOf(&VideoCodecInfo::codecName), 8);
        QCOMPARE(offsetOf(&VideoCodecInfo::reserved), 8 + String);
        QCOMPARE(offsetOf(&VideoCodecInfo::maxInstances), 12 + String);
        QCOMPARE(offsetOf(&VideoCodecInfo::isHardwareAccelerated), 16 + String);
        QCOMPARE(int(sizeof(VideoCodecInfo)), 16 + String + Word);
        QVERIFY((std::is_same<decltype(VideoCodecInfo::isEncoder), bool>::value));
        QVERIFY(std::is_copy_assignable<VideoCodecInfo>::value);
        QVERIFY(std::is_aggregate<VideoCodecInfo>::value);
    }

    void yCbCrFrame_isAPlainRecordWithNaturalAlignment()
    {
        QCOMPARE(offsetOf(&YCbCrFrame::y), 0);
        QCOMPARE(offsetOf(&YCbCrFrame::cb), Word);
        QCOMPARE(offsetOf(&YCbCrFrame::cr), 2 * Word);
        QCOMPARE(offsetOf(&YCbCrFrame::yStride), 3 * Word);
        QCOMPARE(offsetOf(&YCbCrFrame::cStride), 3 * Word + 2);
        QCOMPARE(offsetOf(&YCbCrFrame::chromaStep), 3 * Word + 4);
        QCOMPARE(offsetOf(&YCbCrFrame::width), 3 * Word + 6);
        QCOMPARE(offsetOf(&YCbCrFrame::height), 3 * Word + 8);
        QCOMPARE(offsetOf(&YCbCrFrame::timestamp), 3 * Word + 16);
        QCOMPARE(int(sizeof(YCbCrFrame)), 3 * Word + 24);
        QVERIFY((std::is_same<decltype(YCbCrFrame::y), const unsigned char *>::value));
        QVERIFY((std::is_same<decltype(YCbCrFrame::cr), const unsigned char *>::value));
        QVERIFY((std::is_same<decltype(YCbCrFrame::height), std::uint16_t>::value));
        QVERIFY((std::is_same<decltype(YCbCrFrame::timestamp), std::int64_t>::value));
        QVERIFY(std::is_trivial<YCbCrFrame>::value);
        QVERIFY(std::is_standard_layout<YCbCrFrame>::value);
    }

    void rgbFrame_hasItsFieldsInPlace()
    {
        QCOMPARE(offsetOf(&RGBFrame::fourcc), 0);
        QCOMPARE(offsetOf(&RGBFrame::width), 4);
        QCOMPARE(offsetOf(&RGBFrame::height), 6);
        QCOMPARE(offsetOf(&RGBFrame::stride), 8);
        QCOMPARE(offsetOf(&RGBFrame::data), 16);
        QCOMPARE(offsetOf(&RGBFrame::reserved), 16 + Word);
        QCOMPARE(offsetOf(&RGBFrame::timestamp), 32 + Word);
        QCOMPARE(int(sizeof(RGBFrame)), 40 + Word);
        QVERIFY((std::is_same<decltype(RGBFrame::reserved), std::uint64_t[2]>::value));
        QVERIFY(std::is_trivial<RGBFrame>::value);
    }

    void enumerations_are32BitsWide()
    {
        QVERIFY((isStoredAs<CameraFacing, std::int32_t>()));
        QCOMPARE(int(sizeof(PixelFormat)), 4);
        QCOMPARE(int(sizeof(CameraParameter)), 4);
        QCOMPARE(int(sizeof(CodecType)), 4);
        QCOMPARE(int(sizeof(FrameType)), 4);
    }

    void enumerations_haveTheLibrarysValues()
    {
        QCOMPARE(number(CameraFacing::Front), 1U);
        QCOMPARE(number(PixelFormat::YUV420Planar), 1U);
        QCOMPARE(number(PixelFormat::YUV420SemiPlanar), 2U);
        QCOMPARE(number(PixelFormat::NV21), 0x3132564EU);
        QCOMPARE(number(PixelFormat::YU12), 0x32315559U);
        QCOMPARE(number(PixelFormat::NV12), 0x3231564EU);
        QCOMPARE(number(CodecType::VP8), 1U);
        QCOMPARE(number(CodecType::VP9), 2U);
        QCOMPARE(number(CodecType::H264), 3U);
        QCOMPARE(number(CodecType::H265), 4U);
    }

    void cameraManager_operationsKeepTheirSlots()
    {
        QVERIFY(std::has_virtual_destructor<CameraManager>::value); // slots 1 and 2
        QCOMPARE(slotOf(&CameraManager::reserved3), 3);
        QCOMPARE(slotOf(&CameraManager::getNumberOfCameras), 4);
        QCOMPARE(slotOf(&CameraManager::getCameraInfo), 5);
        QCOMPARE(slotOf(&CameraManager::getCameraCapabilities), 6);
        QCOMPARE(slotOf(&CameraManager::openCamera), 7);
        QCOMPARE(slotOf(&CameraManager::reserved8), 8);
        QCOMPARE(slotOf(&CameraManager::reserved9), 9);
        QCOMPARE(slotOf(&CameraManager::reserved10), 10);
        QCOMPARE(slotOf(&CameraManager::setListener), 11);
    }

    void cameraManagerListener_operationsKeepTheirSlots()
    {
        QVERIFY(std::has_virtual_destructor<CameraManagerListener>::value);
        QCOMPARE(slotOf(&CameraManagerListener::onCameraAdded), 3);
        QCOMPARE(slotOf(&CameraManagerListener::onCameraRemoved), 4);
        QCOMPARE(int(sizeof(CameraManagerListener)), Word);
    }

    void camera_operationsKeepTheirSlots()
    {
        QVERIFY(std::has_virtual_destructor<Camera>::value);
        QCOMPARE(slotOf(&Camera::getInfo), 3);
        QCOMPARE(slotOf(&Camera::getSupportedPixelFormats), 4);
        QCOMPARE(slotOf(&Camera::startCapture), 5);
        QCOMPARE(slotOf(&Camera::stopCapture), 6);
        QCOMPARE(slotOf(&Camera::captureStarted), 7);
        QCOMPARE(slotOf(&Camera::reserved8), 8);
        QCOMPARE(slotOf(&Camera::reserved9), 9);
        QCOMPARE(slotOf(&Camera::reserved10), 10);
        QCOMPARE(slotOf(&Camera::setListener), 11);
    }

    void cameraListener_operationsKeepTheirSlots()
    {
        QVERIFY(std::has_virtual_destructor<CameraListener>::value);
        QCOMPARE(slotOf(&CameraListener::onCameraFrame), 3);
        QCOMPARE(slotOf(&CameraListener::onCameraError), 4);
        QCOMPARE(slotOf(&CameraListener::onCameraParameterChanged), 5);
        QCOMPARE(int(sizeof(CameraListener)), Word);
    }

    void codecManager_operationsKeepTheirSlots()
    {
        QVERIFY(std::has_virtual_destructor<CodecManager>::value);
        QCOMPARE(slotOf(&CodecManager::prepare), 3);
        QCOMPARE(slotOf(&CodecManager::isEncoderSupported), 4);
        QCOMPARE(slotOf(&CodecManager::isDecoderSupported), 5);
        QCOMPARE(slotOf(&CodecManager::createVideoEncoder), 6);
        QCOMPARE(slotOf(&CodecManager::createVideoDecoder), 7);
        QCOMPARE(slotOf(&CodecManager::getVideoCodecs), 8);
    }

    void codecInfoInterface_operationsKeepTheirSlots()
    {
        using Interface = QPVMediaServiceCodecInfoInterface;
        QVERIFY(std::has_virtual_destructor<Interface>::value);
        QCOMPARE(slotOf(&Interface::codecType), 3);
        QCOMPARE(slotOf(&Interface::codecIsEncoder), 4);
        QCOMPARE(slotOf(&Interface::codecIsHardwareAccelerated), 5);
        QCOMPARE(slotOf(&Interface::codecMaxInstances), 6);
    }

    void operations_haveTheContractsTypes()
    {
        QVERIFY((std::is_same<decltype(&CameraManager::getCameraInfo),
                              bool (CameraManager::*)(int, CameraInfo &)>::value));
        QVERIFY((std::is_same<decltype(&CameraManager::getCameraCapabilities),
                              bool (CameraManager::*)(const CameraInfo &,
                                                      std::vector<CameraCapability> &)>::value));
        QVERIFY((std::is_same<decltype(&CameraManager::openCamera),
                              std::shared_ptr<Camera> (CameraManager::*)(
                                      const std::string &)>::value));
        QVERIFY((std::is_same<decltype(&Camera::getSupportedPixelFormats),
                              std::vector<PixelFormat> (Camera::*)()>::value));
        QVERIFY((std::is_same<decltype(&Camera::startCapture),
                              bool (Camera::*)(const CameraCapability &, int)>::value));
        QVERIFY((std::is_same<decltype(&CameraListener::onCameraFrame),
                              void (CameraListener::*)(std::shared_ptr<GraphicBuffer>)>::value));
        QVERIFY((std::is_same<decltype(&CameraListener::onCameraParameterChanged),
                              void (CameraListener::*)(CameraParameter,
                                                       const std::string &)>::value));
        QVERIFY((std::is_same<decltype(&CodecManager::createVideoEncoder),
                              std::shared_ptr<VideoEncoder> (CodecManager::*)(CodecType,
                                                                              int)>::value));
        QVERIFY((std::is_same<decltype(&CodecManager::createVideoDecoder),
                              std::shared_ptr<VideoDecoder> (CodecManager::*)(CodecType,
                                                                              int)>::value));
    }

    void managerAndCamera_holdListenerThenMutex()
    {
        QCOMPARE(ManagerData::listenerOffset(), Word);
        QCOMPARE(ManagerData::mutexOffset(), 2 * Word);
        QVERIFY(ManagerData::isStdMutex);
        QCOMPARE(int(sizeof(CameraManager)), 2 * Word + int(sizeof(std::mutex)));
        QCOMPARE(CameraData::listenerOffset(), Word);
        QCOMPARE(CameraData::mutexOffset(), 2 * Word);
        QVERIFY(CameraData::isStdMutex);
        QCOMPARE(int(sizeof(Camera)), 2 * Word + int(sizeof(std::mutex)));
        QCOMPARE(int(sizeof(CodecManager)), Word);
    }

    void videoOutput_addsOnePointerToQObject_andNothingVirtual()
    {
        QCOMPARE(sizeof(VideoOutputQt5), sizeof(QObject) + sizeof(void *));
        QVERIFY((std::is_base_of<QObject, VideoOutputQt5>::value));
        QVERIFY(!isVirtual(&VideoOutputQt5::videoSurface));
        QVERIFY(!isVirtual(&VideoOutputQt5::setVideoSurface));
        QVERIFY(!isVirtual(&VideoOutputQt5::setViewport));
        QVERIFY(!isVirtual(&VideoOutputQt5::setMirrored));
        QVERIFY(!isVirtual(&VideoOutputQt5::stop));
        QVERIFY(!isVirtual(&VideoOutputQt5::onGraphicBuffer));
        QVERIFY(!isVirtual(&VideoOutputQt5::onVideoFrame));
        QVERIFY((std::is_same<decltype(&VideoOutputQt5::setViewport),
                              void (VideoOutputQt5::*)(QRect)>::value));
        QVERIFY((std::is_same<decltype(&VideoOutputQt5::onGraphicBuffer),
                              void (VideoOutputQt5::*)(std::shared_ptr<GraphicBuffer>)>::value));
        QVERIFY((std::is_same<decltype(&VideoOutputQt5::onVideoFrame),
                              void (VideoOutputQt5::*)(const YCbCrFrame *)>::value));
        QVERIFY((!std::is_convertible<QObject *, VideoOutputQt5>::value)); // explicit
    }

    void rawVideoSourceControl_addsNothingToQtsRendererControl()
    {
        QVERIFY((std::is_base_of<QVideoRendererControl, QPVRawVideoSourceControl>::value));
        QCOMPARE(sizeof(QPVRawVideoSourceControl), sizeof(QVideoRendererControl));
        QVERIFY((!std::is_constructible<QPVRawVideoSourceControl, QObject *>::value));
        QVERIFY(!std::is_default_constructible<QPVRawVideoSourceControl>::value);
    }

    void interfaceIds_areThoseOfTheExchangeLibrary()
    {
        QCOMPARE(QByteArray(qobject_interface_iid<QPVMediaServiceCodecInfoInterface *>()),
                 QByteArray("veltra.palaver.mediaservicecodecinfo/1.0"));
        QCOMPARE(QByteArray(qmediacontrol_iid<QPVRawVideoSourceControl *>()),
                 QByteArray("veltra.palaver.rawvideosourcecontrol/1.0"));
        QCOMPARE(QByteArray(QPVRawVideoSourceControl_iid),
                 QByteArray("veltra.palaver.rawvideosourcecontrol/1.0"));
    }
};

QTEST_GUILESS_MAIN(TestContract)
#include "tst_contract.moc"
