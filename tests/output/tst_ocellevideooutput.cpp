// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "fakegraphicbuffer.h"
#include "fakeplatform.h"
#include "fakesurface.h"
#include "librarythread.h"
#include "ocellevideooutput.h"

#include <QtTest>

using namespace Veltra::Ocelle;

class TestVideoOutput : public QObject
{
    Q_OBJECT
private slots:
    void construction_makesOnePlatformOutputWithoutParent()
    {
        FakePlatform platform;
        QObject parent;
        OcelleVideoOutput output(&parent);
        QCOMPARE(output.parent(), &parent);
        QCOMPARE(FakeVideoOutput::count(), 1);
        QVERIFY(!FakeVideoOutput::at(1)->hadParent());
        QCOMPARE(CallLog::instance().texts(), QStringList("output 1: created"));
    }

    void destruction_destroysThePlatformOutput()
    {
        FakePlatform platform;
        auto *output = new OcelleVideoOutput(nullptr);
        delete output;
        QCOMPARE(FakeVideoOutput::alive(), 0);
        QCOMPARE(CallLog::instance().texts(),
                 (QStringList { "output 1: created", "output 1: destroyed" }));
    }

    void surface_isThePlatformOutputs()
    {
        FakePlatform platform;
        FakeSurface surface;
        OcelleVideoOutput output(nullptr);
        QVERIFY(!output.surface());
        output.setSurface(&surface);
        QCOMPARE(FakeVideoOutput::at(1)->surface(), &surface);
        QCOMPARE(output.surface(), &surface);
        output.setSurface(nullptr);
        QVERIFY(!FakeVideoOutput::at(1)->surface());
        QVERIFY(!output.surface());
    }

    void everyOperation_isForwardedOnce()
    {
        FakePlatform platform;
        OcelleVideoOutput output(nullptr);
        YCbCrFrame frame {};
        CallLog::instance().clear();
        output.stop();
        output.setViewport(QRect(1, 2, 30, 40));
        output.setMirrored(true);
        output.setMirrored(true); // no comparing here
        output.setMirrored(false);
        output.onVideoFrame(&frame);
        output.onVideoFrame(nullptr);
        const QString address = QString("0x%1").arg(quintptr(&frame), 0, 16);
        QCOMPARE(CallLog::instance().texts(),
                 (QStringList { "output 1: stop()", "output 1: setViewport(1,2 30x40)",
                                "output 1: setMirrored(1)", "output 1: setMirrored(1)",
                                "output 1: setMirrored(0)",
                                "output 1: onVideoFrame(" + address + ")",
                                "output 1: onVideoFrame(0x0)" }));
        QCOMPARE(FakeVideoOutput::at(1)->viewport(), QRect(1, 2, 30, 40));
    }

    void graphicBuffer_ownershipIsHandedOn_notKept()
    {
        FakePlatform platform;
        OcelleVideoOutput output(nullptr);
        auto buffer = GraphicBuffer::create(5);
        output.onGraphicBuffer(buffer);
        QCOMPARE(FakeVideoOutput::at(1)->buffers(), QVector<int> { 5 });
        QCOMPARE(buffer.use_count(), 1L);
        output.onGraphicBuffer(std::move(buffer));
        QCOMPARE(GraphicBuffer::alive(), 0);
    }

    void pictures_areForwardedOnTheCallersThread()
    {
        FakePlatform platform;
        OcelleVideoOutput output(nullptr);
        CallLog::instance().clear();
        LibraryThread::run("Pictures", [&] {
            YCbCrFrame frame {};
            output.onVideoFrame(&frame);
            output.onGraphicBuffer(GraphicBuffer::create(1));
        });
        QCOMPARE(CallLog::instance().texts().size(), 2);
        QCOMPARE(CallLog::instance().threadNames("output"), QStringList("Pictures"));
    }

    void metaObject_hasNoSignalsSlotsOrPropertiesOfItsOwn()
    {
        const QMetaObject &meta = OcelleVideoOutput::staticMetaObject;
        QCOMPARE(meta.className(), "OcelleVideoOutput");
        QCOMPARE(meta.methodCount(), QObject::staticMetaObject.methodCount());
        QCOMPARE(meta.propertyCount(), QObject::staticMetaObject.propertyCount());
    }
};

QTEST_GUILESS_MAIN(TestVideoOutput)
#include "tst_ocellevideooutput.moc"
