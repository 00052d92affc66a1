// SPDX-License-Identifier: BSD-3-Clause
#include "captureservicefixture.h"
#include "ocelleviewfindersettings2.h"

#include <QtTest>

class TestViewfinderSettings2 : public QObject
{
    Q_OBJECT
private slots:
    void construction_hasTheSessionAsParent()
    {
        CaptureSessionFixture f;
        auto *control = new OcelleViewfinderSettings2(f.session.get());
        QCOMPARE(control->parent(), f.session.get());
    }

    void supportedSettings_areTheSessions()
    {
        CaptureSessionFixture f;
        OcelleViewfinderSettings2 control(f.session.get());
        QVERIFY(control.supportedViewfinderSettings().isEmpty());
        QVERIFY(f.reach(QCamera::LoadedState));
        QCOMPARE(control.supportedViewfinderSettings().size(), 6);
        QCOMPARE(control.supportedViewfinderSettings(), f.session->supportedViewfinderSettings());
    }

    void settings_goToTheSessionAndComeFromIt()
    {
        CaptureSessionFixture f;
        OcelleViewfinderSettings2 control(f.session.get());
        QVERIFY(control.viewfinderSettings().isNull());
        const QCameraViewfinderSettings settings = viewfinderSettings(QSize(1280, 720), 60);
        control.setViewfinderSettings(settings);
        QCOMPARE(f.session->viewfinderSettings(), settings);
        QCOMPARE(control.viewfinderSettings(), settings);
    }

    void metaObject_isThatOfQtsControl()
    {
        CaptureSessionFixture f;
        OcelleViewfinderSettings2 control(f.session.get());
        QCOMPARE(control.metaObject(), &QCameraViewfinderSettingsControl2::staticMetaObject);
    }
};

QTEST_GUILESS_MAIN(TestViewfinderSettings2)
#include "tst_ocelleviewfindersettings2.moc"
