// SPDX-License-Identifier: BSD-3-Clause
#include "captureservicefixture.h"
#include "ocellecapturecontrol.h"

#include <QtTest>

using Control = QCameraControl;

class TestCaptureControl : public QObject
{
    Q_OBJECT
private slots:
    void construction_hasNoParent()
    {
        CaptureSessionFixture f;
        QVERIFY(!f.session->captureControl()->parent());
    }

    void state_isTheOneRequested_statusTheOneReached()
    {
        CaptureSessionFixture f;
        Control *control = f.session->captureControl();
        QCOMPARE(control->state(), QCamera::UnloadedState);
        QCOMPARE(control->status(), QCamera::UnloadedStatus);
        control->setState(QCamera::ActiveState);
        QCOMPARE(control->state(), QCamera::ActiveState);
        QCOMPARE(f.recorder.states, QList<int> { QCamera::ActiveState });
        QTRY_COMPARE(control->status(), QCamera::ActiveStatus);
    }

    void captureMode_isVideo_whateverIsSet()
    {
        CaptureSessionFixture f;
        Control *control = f.session->captureControl();
        QCOMPARE(control->captureMode(), QCamera::CaptureModes(QCamera::CaptureVideo));
        control->setCaptureMode(QCamera::CaptureStillImage);
        QCOMPARE(control->captureMode(), QCamera::CaptureModes(QCamera::CaptureVideo));
    }

    void captureModes_onlyPlainVideoIsSupported_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<bool>("supported");
        QTest::newRow("viewfinder") << int(QCamera::CaptureViewfinder) << false;
        QTest::newRow("still image") << int(QCamera::CaptureStillImage) << false;
        QTest::newRow("video") << int(QCamera::CaptureVideo) << true;
        QTest::newRow("video and still image")
                << int(QCamera::CaptureVideo | QCamera::CaptureStillImage) << false;
    }

    void captureModes_onlyPlainVideoIsSupported()
    {
        QFETCH(int, mode);
        QFETCH(bool, supported);
        CaptureSessionFixture f;
        QCOMPARE(f.session->captureControl()->isCaptureModeSupported(QCamera::CaptureModes(mode)),
                 supported);
    }

    void properties_canChangeExceptWhileActive_data()
    {
        QTest::addColumn<int>("status");
        for (int status = QCamera::UnavailableStatus; status <= QCamera::ActiveStatus; ++status)
            QTest::newRow(qPrintable(QString::number(status))) << status;
    }

    void properties_canChangeExceptWhileActive()
    {
        QFETCH(int, status);
        CaptureSessionFixture f;
        const Control *control = f.session->captureControl();
        for (auto property :
             { Control::CaptureMode, Control::ImageEncodingSettings, Control::VideoEncodingSettings,
               Control::Viewfinder, Control::ViewfinderSettings }) {
            QCOMPARE(control->canChangeProperty(property, QCamera::Status(status)),
                     status != QCamera::ActiveStatus);
        }
    }

    void sessionErrors_becomeTheControls()
    {
        CaptureSessionFixture f;
        emit f.session->error(7, "of the session");
        QCOMPARE(f.recorder.errors, QStringList("7 of the session"));
    }

    void metaObject_namesTheClass()
    {
        const QMetaObject &meta = OcelleCaptureControl::staticMetaObject;
        QCOMPARE(meta.className(), "OcelleCaptureControl");
        QCOMPARE(meta.superClass(), &QCameraControl::staticMetaObject);
        QCOMPARE(meta.methodCount(), QCameraControl::staticMetaObject.methodCount());
    }
};

QTEST_GUILESS_MAIN(TestCaptureControl)
#include "tst_ocellecapturecontrol.moc"
