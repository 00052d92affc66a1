// SPDX-License-Identifier: BSD-3-Clause
#include "streamingcamera.h"

#include <QSignalSpy>
#include <QTest>

#include <viewfinderchoice.h>

using Viewer::ViewfinderChoice;

class TestViewfinderChoice : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void load_offersSizesAndRates_andTakesTheFirst();
    void chooseSize_keepsRate_andGivesItToTheCamera();
    void wish_isMet_whereItIsOffered();
    void wish_isToldOf_whereItIsNotOffered();
    void choosing_whatIsNotThere_changesNothing();
    void clear_leavesNothing();

private:
    std::unique_ptr<StreamingCamera> m_camera;
};

void TestViewfinderChoice::init()
{
    m_camera = std::make_unique<StreamingCamera>("pattern:back");
    m_camera->camera()->load();
    QTRY_COMPARE(m_camera->camera()->status(), QCamera::LoadedStatus);
}

void TestViewfinderChoice::cleanup()
{
    m_camera.reset();
}

void TestViewfinderChoice::load_offersSizesAndRates_andTakesTheFirst()
{
    ViewfinderChoice choice;
    choice.load(m_camera->item());
    QCOMPARE(choice.sizes(),
             QStringList({ QStringLiteral("320 × 240"), QStringLiteral("640 × 480"),
                           QStringLiteral("1280 × 720"), QStringLiteral("1920 × 1080") }));
    QCOMPARE(choice.rates(), QStringList({ QStringLiteral("15 fps"), QStringLiteral("30 fps"),
                                           QStringLiteral("60 fps") }));
    const QCameraViewfinderSettings first =
            m_camera->camera()->supportedViewfinderSettings().first();
    QCOMPARE(choice.size(), first.resolution());
    QCOMPARE(choice.rate(), first.maximumFrameRate());
    QCOMPARE(m_camera->camera()->viewfinderSettings(), first);
}

void TestViewfinderChoice::chooseSize_keepsRate_andGivesItToTheCamera()
{
    ViewfinderChoice choice;
    choice.load(m_camera->item());
    m_camera->camera()->start();
    QTRY_VERIFY(m_camera->surface()->pictures > 0);
    choice.chooseRate(choice.rates().indexOf(QStringLiteral("60 fps")));
    choice.chooseSize(choice.sizes().indexOf(QStringLiteral("1280 × 720")));
    QCOMPARE(choice.size(), QSize(1280, 720));
    QCOMPARE(choice.rate(), 60.0);
    QTRY_COMPARE(m_camera->surface()->last.size(), QSize(1280, 720));
}

void TestViewfinderChoice::wish_isMet_whereItIsOffered()
{
    ViewfinderChoice choice;
    QSignalSpy failed(&choice, &ViewfinderChoice::failed);
    choice.wish(QSize(320, 240), 15);
    choice.load(m_camera->item());
    QCOMPARE(choice.size(), QSize(320, 240));
    QCOMPARE(choice.rate(), 15.0);
    QVERIFY(failed.isEmpty());
}

void TestViewfinderChoice::wish_isToldOf_whereItIsNotOffered()
{
    ViewfinderChoice choice;
    QSignalSpy failed(&choice, &ViewfinderChoice::failed);
    choice.wish(QSize(333, 222), 0);
    choice.load(m_camera->item());
    QCOMPARE(failed.count(), 1);
    QVERIFY(failed.first().first().toString().startsWith(
            QStringLiteral("size 333x222 is not offered; the nearest are 320x240")));
    QVERIFY(choice.sizeIndex() >= 0);
}

void TestViewfinderChoice::choosing_whatIsNotThere_changesNothing()
{
    ViewfinderChoice choice;
    choice.load(m_camera->item());
    const QSize size = choice.size();
    choice.chooseSize(99);
    choice.chooseSize(-1);
    choice.chooseRate(99);
    choice.chooseRate(-1);
    QCOMPARE(choice.size(), size);
}

void TestViewfinderChoice::clear_leavesNothing()
{
    ViewfinderChoice choice;
    choice.load(m_camera->item());
    choice.clear();
    QCOMPARE(choice.sizes(), QStringList());
    QCOMPARE(choice.sizeIndex(), -1);
    QCOMPARE(choice.rateIndex(), -1);
    QVERIFY(choice.size().isEmpty());
}

QTEST_GUILESS_MAIN(TestViewfinderChoice)
#include "tst_viewfinderchoice.moc"
