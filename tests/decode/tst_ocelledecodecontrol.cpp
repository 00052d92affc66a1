// SPDX-License-Identifier: BSD-3-Clause
#include "decodeservicefixture.h"
#include "ocelledecodecontrol.h"

#include <QtTest>

using namespace Statuses;

class TestDecodeControl : public QObject
{
    Q_OBJECT
private slots:
    void control_isTheSessionsChild()
    {
        DecodeServiceFixture f;
        QCOMPARE(f.control->parent(), f.session());
        QCOMPARE(f.control, f.session()->decodeControl());
        QVERIFY(qobject_cast<OcelleDecodeControl *>(f.control));
    }

    void outputFormat_isWhatWasSetLast()
    {
        DecodeServiceFixture f;
        auto *const control = f.session()->decodeControl();
        QVERIFY(!control->outputFormat().isValid());
        QList<QVideoSurfaceFormat> told;
        connect(control, &QPVDecodeControl::outputFormatChanged, control,
                [&told](const QVideoSurfaceFormat &format) { told.append(format); });
        const QVideoSurfaceFormat format(QSize(64, 48), QVideoFrame::Format_NV12);
        control->setOutputFormat(format);
        control->setOutputFormat(format); // told of again
        QCOMPARE(control->outputFormat(), format);
        QCOMPARE(told, (QList<QVideoSurfaceFormat> { format, format }));
    }

    void service_mayGoInASlotOfTheOutputFormat()
    {
        DecodeServiceFixture f;
        QVERIFY(f.activate());
        auto *const control = f.session()->decodeControl();
        const QVideoSurfaceFormat format(QSize(64, 48), QVideoFrame::Format_NV12);
        QVideoSurfaceFormat set;
        int told = 0;
        connect(control, &QPVDecodeControl::outputFormatChanged, this,
                [&](const QVideoSurfaceFormat &now) {
                    set = control->outputFormat();
                    f.service.reset();
                    QCOMPARE(now, format); // not the control's own
                    ++told;
                });
        connect(control, &QPVDecodeControl::outputFormatChanged, this, [&told] { ++told; });
        control->setOutputFormat(format);
        QCOMPARE(set, format);
        QCOMPARE(told, 1); // there is no sender for a second one
        QCOMPARE(f.platform.codecs.heldDecoders(), 0);
        QCOMPARE(f.recorder.statuses.last(), Unloaded);
    }

    void decoding_setsNoOutputFormat()
    {
        DecodeServiceFixture f;
        QVERIFY(f.activate());
        QVERIFY(!f.control->outputFormat().isValid());
    }

    void everything_isTheSessions()
    {
        DecodeServiceFixture f;
        QCOMPARE(f.control->supportedCodecs(true).size(), 4);
        QVERIFY(f.control->isFormatSupported(streamSettings()));
        QVERIFY(f.control->codecSettings().isNull());
        QVERIFY(!f.control->decode(testFrame()));
        QVERIFY(f.activate());
        QCOMPARE(f.control->codecSettings(), streamSettings());
        QCOMPARE(int(f.control->status()), Active);
        f.control->drain();
        QVERIFY(f.waitForStatus(Unloaded));
        QVERIFY(f.waitForCall("decoder 1: drain()"));
        QVERIFY(f.start());
        f.control->flush();
        QVERIFY(f.waitForCall("decoder 2: flush()"));
        QVERIFY(f.waitForStatus(Unloaded));
        QVERIFY(f.start());
        f.control->stop();
        QVERIFY(f.waitForCall("decoder 3: flush()"));
        QVERIFY(f.waitForStatus(Unloaded));
        QCOMPARE(f.recorder.errors, QStringList());
    }
};

QTEST_GUILESS_MAIN(TestDecodeControl)
#include "tst_ocelledecodecontrol.moc"
