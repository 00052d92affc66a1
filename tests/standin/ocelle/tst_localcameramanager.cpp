// SPDX-License-Identifier: BSD-3-Clause
#include "localcameramanager.h"
#include "stderrcapture.h"
#include "streamingcamera.h"

#include <QtTest>

#include <atomic>
#include <functional>
#include <mutex>
#include <thread>

using namespace Veltra::Ocelle;

namespace {

/*! A source whose list the test sets. */
class ListedSource final : public CameraSource
{
public:
    std::vector<CameraDescription> cameras() override
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_cameras;
    }
    void watch(std::function<void()> changed) override { m_changed = std::move(changed); }
    std::shared_ptr<Camera> open(const std::string &id) override
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_opened += QString::fromStdString(id);
        return {};
    }

    /*! Words "id" or "id@revision". */
    void set(const QStringList &cameras)
    {
        std::vector<CameraDescription> list;
        for (const QString &text : cameras) {
            CameraDescription camera;
            camera.info.id = text.section('@', 0, 0).toStdString();
            camera.info.name = "Camera " + camera.info.id;
            camera.capabilities = { { 640, 480, 30 } };
            camera.revision = text.section('@', 1, 1).toUInt();
            list.push_back(camera);
        }
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_cameras.swap(list);
        }
        if (m_changed)
            m_changed();
    }
    QStringList opened() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_opened;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<CameraDescription> m_cameras;
    QStringList m_opened;
    std::function<void()> m_changed;
};

QStringList idsOf(CameraManager &manager)
{
    QStringList ids;
    CameraInfo info;
    for (int i = 0; i < manager.getNumberOfCameras(); ++i) {
        if (manager.getCameraInfo(i, info))
            ids += QString::fromStdString(info.id);
    }
    return ids;
}

/*! Writes down "+id" and "-id", each with the list as it was then. */
class Listener : public CameraManagerListener
{
public:
    explicit Listener(CameraManager &manager)
        : m_manager(manager)
    {
    }

    void onCameraAdded(const std::string &id) override { note('+', id); }
    void onCameraRemoved(const std::string &id) override { note('-', id); }

    QStringList events() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_events;
    }

    std::function<void()> onEvent; // set before it is listening

private:
    void note(char sign, const std::string &id)
    {
        const QString list = idsOf(m_manager).join(' ');
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_events += QChar(sign) + QString::fromStdString(id) + QString(" (%1)").arg(list);
        }
        if (onEvent)
            onEvent();
    }

    CameraManager &m_manager;
    mutable std::mutex m_mutex;
    QStringList m_events;
};

} // namespace

class TestLocalCameraManager : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void cameras_areThoseOfAllSources_inTheirOrder();
    void camera_ofTwoSources_isThatOfTheFirst();
    void unknownCameras_getNeutralAnswers();
    void addedCamera_isTold_whenTheListShowsIt();
    void removedCamera_isTold_whenTheListLacksIt();
    void replacedCamera_isToldAsRemovedAndAdded();
    void replacedCamera_movesToTheNextSource_whenTheFirstLosesIt();
    void changeWithoutDifference_isNotTold();
    void setListener_null_endsCallbacks();
    void setListener_fromWithinTheCallback_doesNotDeadlock();
    void changes_whileOthersAsk_areConsistent();
    void destruction_whileChangesCome_isClean();

private:
    ListedSource *m_first = nullptr; // owned by the manager
    ListedSource *m_second = nullptr;
    std::unique_ptr<LocalCameraManager> m_manager;
};

void TestLocalCameraManager::init()
{
    std::vector<std::unique_ptr<CameraSource>> sources;
    sources.push_back(std::make_unique<ListedSource>());
    sources.push_back(std::make_unique<ListedSource>());
    m_first = static_cast<ListedSource *>(sources[0].get());
    m_second = static_cast<ListedSource *>(sources[1].get());
    m_first->set({ "a", "b" });
    m_second->set({ "c" });
    m_manager = std::make_unique<LocalCameraManager>(std::move(sources));
}

void TestLocalCameraManager::cleanup()
{
    m_manager.reset();
}

void TestLocalCameraManager::cameras_areThoseOfAllSources_inTheirOrder()
{
    QCOMPARE(m_manager->getNumberOfCameras(), 3);
    QCOMPARE(idsOf(*m_manager), QStringList({ "a", "b", "c" }));
    CameraInfo info;
    QVERIFY(m_manager->getCameraInfo(2, info));
    QCOMPARE(QString::fromStdString(info.name), QString("Camera c"));
    std::vector<CameraCapability> capabilities;
    QVERIFY(m_manager->getCameraCapabilities(info, capabilities));
    QCOMPARE(capabilities.size(), std::size_t(1));
    m_manager->openCamera("c");
    QCOMPARE(m_second->opened(), QStringList { "c" });
    QVERIFY(m_first->opened().isEmpty());
}

void TestLocalCameraManager::camera_ofTwoSources_isThatOfTheFirst()
{
    Listener listener(*m_manager);
    m_manager->setListener(&listener);
    m_second->set({ "b", "c", "d" });
    QTRY_COMPARE(listener.events(), QStringList { "+d (a b c d)" });
    m_manager->openCamera("b");
    QCOMPARE(m_first->opened(), QStringList { "b" });
    m_manager->setListener(nullptr);
}

void TestLocalCameraManager::unknownCameras_getNeutralAnswers()
{
    CameraInfo info;
    info.id = "kept";
    QVERIFY(!m_manager->getCameraInfo(-1, info));
    QVERIFY(!m_manager->getCameraInfo(3, info));
    QCOMPARE(QString::fromStdString(info.id), QString("kept"));
    std::vector<CameraCapability> capabilities;
    QVERIFY(!m_manager->getCameraCapabilities(info, capabilities));
    StderrCapture capture;
    QVERIFY(!m_manager->openCamera("x"));
    QCOMPARE(capture.lines(), QStringList { "ocelle: there is no camera \"x\" to open" });
}

void TestLocalCameraManager::addedCamera_isTold_whenTheListShowsIt()
{
    Listener listener(*m_manager);
    m_manager->setListener(&listener);
    m_first->set({ "a", "b", "e" });
    QTRY_COMPARE(listener.events(), QStringList { "+e (a b e c)" });
    m_manager->setListener(nullptr);
}

void TestLocalCameraManager::removedCamera_isTold_whenTheListLacksIt()
{
    Listener listener(*m_manager);
    m_manager->setListener(&listener);
    m_first->set({ "b" });
    QTRY_COMPARE(listener.events(), QStringList { "-a (b c)" });
    m_second->set({});
    QTRY_COMPARE(listener.events().value(1), QString("-c (b)"));
    m_manager->setListener(nullptr);
}

void TestLocalCameraManager::replacedCamera_isToldAsRemovedAndAdded()
{
    Listener listener(*m_manager);
    m_manager->setListener(&listener);
    m_first->set({ "a@1", "b" });
    QTRY_COMPARE(listener.events(), QStringList({ "-a (b c)", "+a (a b c)" }));
    m_manager->setListener(nullptr);
}

void TestLocalCameraManager::replacedCamera_movesToTheNextSource_whenTheFirstLosesIt()
{
    m_second->set({ "b", "c" });
    Listener listener(*m_manager);
    m_manager->setListener(&listener);
    m_first->set({ "a" });
    QTRY_COMPARE(listener.events(), QStringList({ "-b (a c)", "+b (a b c)" }));
    m_manager->setListener(nullptr);
    m_manager->openCamera("b");
    QCOMPARE(m_second->opened(), QStringList { "b" });
}

void TestLocalCameraManager::changeWithoutDifference_isNotTold()
{
    Listener listener(*m_manager);
    m_manager->setListener(&listener);
    m_first->set({ "a", "b" });
    m_first->set({ "a", "b", "z" }); // told after the other one was looked at
    QTRY_COMPARE(listener.events(), QStringList { "+z (a b z c)" });
    m_manager->setListener(nullptr);
}

void TestLocalCameraManager::setListener_null_endsCallbacks()
{
    Listener first(*m_manager);
    Listener second(*m_manager);
    m_manager->setListener(&first);
    m_manager->setListener(nullptr);
    m_manager->setListener(&second);
    m_first->set({ "a", "b", "d" });
    QTRY_COMPARE(second.events().size(), 1);
    QVERIFY(first.events().isEmpty());
    m_manager->setListener(nullptr);
}

void TestLocalCameraManager::setListener_fromWithinTheCallback_doesNotDeadlock()
{
    Listener listener(*m_manager);
    listener.onEvent = [this] { m_manager->setListener(nullptr); };
    m_manager->setListener(&listener);
    m_first->set({ "a", "b", "d", "e" });
    QTRY_COMPARE(m_manager->getNumberOfCameras(), 5);
    QTRY_COMPARE(listener.events().size(), 1); // the second one had no listener
    m_manager->setListener(nullptr);           // waits for whatever is under way
    QCOMPARE(listener.events(), QStringList { "+d (a b d e c)" });
}

void TestLocalCameraManager::changes_whileOthersAsk_areConsistent()
{
    std::atomic<bool> quit { false };
    std::thread asker([&] {
        while (!quit) {
            CameraInfo first;
            QVERIFY(m_manager->getCameraInfo(0, first));
            QCOMPARE(QString::fromStdString(first.id), QString("a"));
            std::vector<CameraCapability> capabilities;
            first.id = "b";
            if (m_manager->getCameraCapabilities(first, capabilities))
                QCOMPARE(capabilities.size(), std::size_t(1));
        }
    });
    std::thread setter([&] {
        while (!quit) {
            Listener listener(*m_manager);
            m_manager->setListener(&listener);
            m_manager->setListener(nullptr);
        }
    });
    for (int i = 0; i < 300; ++i)
        m_first->set(i % 2 ? QStringList { "a", "b" } : QStringList { "a" });
    m_first->set({ "a", "b", "end" });
    QTRY_COMPARE(idsOf(*m_manager), QStringList({ "a", "b", "end", "c" }));
    quit = true;
    asker.join();
    setter.join();
}

void TestLocalCameraManager::destruction_whileChangesCome_isClean()
{
    for (int round = 0; round < 50; ++round) {
        Listener listener(*m_manager);
        m_manager->setListener(&listener);
        m_first->set({ "a" });
        m_first->set({ "b" });
        m_manager.reset();
        QVERIFY(listener.events().size() <= 4);
        init();
    }
}

QTEST_GUILESS_MAIN(TestLocalCameraManager)
#include "tst_localcameramanager.moc"
