// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"
#include "gate.h"
#include "ocelleworkerthread.h"

#include <QEvent>
#include <QTimer>
#include <QtTest>

#include <atomic>
#include <functional>
#include <memory>
#include <thread>
#include <utility>

namespace {

void log(const QString &what)
{
    CallLog::instance().add(QStringLiteral("worker"), what);
}

QStringList calls()
{
    return CallLog::instance().texts();
}

class WorkEvent : public QEvent
{
public:
    explicit WorkEvent(std::function<void()> work)
        : QEvent(QEvent::User)
        , m_work(std::move(work))
    {
    }

    void work() const { m_work(); }

private:
    const std::function<void()> m_work;
};

/*! Does what its events say. */
class Worker : public QObject
{
protected:
    void customEvent(QEvent *event) override { static_cast<WorkEvent *>(event)->work(); }
};

/*! A worker on its thread, that does what the test asks for; its statuses are logged. */
class ThreadFixture
{
public:
    explicit ThreadFixture(std::function<void(int)> onStatus = {})
        : thread("TestedWorker", [onStatus](int status) {
            log(QStringLiteral("status(%1)").arg(status));
            if (onStatus)
                onStatus(status);
        })
    {
        CallLog::instance().clear();
    }
    ~ThreadFixture()
    {
        if (!thread.isRunning())
            return;
        thread.quit();
        thread.waitServingEvents();
    }

    void start() { thread.start(&worker); }
    /*! Has \a work done on the worker's thread, behind what was asked for before. */
    void post(std::function<void()> work)
    {
        QCoreApplication::postEvent(&worker, new WorkEvent(std::move(work)));
    }
    void postStatus(int status)
    {
        post([this, status] {
            thread.deliverStatus(status);
            log(QStringLiteral("told(%1)").arg(status));
        });
    }

    Worker worker;
    OcelleWorkerThread thread;
};

} // namespace

class TestWorkerThread : public QObject
{
    Q_OBJECT
private slots:
    void start_movesTheWorkerToTheNamedThread()
    {
        ThreadFixture f;
        QVERIFY(!f.thread.isRunning());
        QCOMPARE(f.worker.thread(), QThread::currentThread());
        f.start();
        QVERIFY(f.thread.isRunning());
        QVERIFY(f.worker.thread() != QThread::currentThread());
        QCOMPARE(f.worker.thread()->objectName(), QString("TestedWorker"));
        f.post([] { log("works"); });
        QTRY_COMPARE(calls(), QStringList("worker: works"));
        QCOMPARE(CallLog::instance().threadNames("worker"), QStringList("TestedWorker"));
    }

    void threadThatIsNotStarted_isNotWaitedFor()
    {
        ThreadFixture f;
        f.thread.waitServingEvents();
        QVERIFY(!f.thread.isRunning());
    }

    void statuses_areHandledOnTheApplicationThreadWhileTheWorkerWaits()
    {
        ThreadFixture f;
        f.start();
        f.postStatus(4);
        f.postStatus(7);
        const QStringList expected { "worker: status(4)", "worker: told(4)", "worker: status(7)",
                                     "worker: told(7)" };
        QTRY_COMPARE(calls(), expected);
        for (const Call &call : CallLog::instance().calls())
            QCOMPARE(call.thread == std::this_thread::get_id(), call.what.startsWith("status"));
    }

    void quit_letsWhatIsQueuedBeDone()
    {
        ThreadFixture f;
        f.start();
        for (int status = 1; status <= 3; ++status)
            f.postStatus(status);
        f.thread.quit();
        f.thread.waitServingEvents();
        QVERIFY(!f.thread.isRunning());
        QCOMPARE(calls(),
                 (QStringList { "worker: status(1)", "worker: told(1)", "worker: status(2)",
                                "worker: told(2)", "worker: status(3)", "worker: told(3)" }));
    }

    void wait_servesEventsHoweverLongTheWorkerTakes()
    {
        ThreadFixture f;
        Gate gate;
        gate.close();
        f.start();
        f.post([&gate] {
            gate.pass();
            log("done");
        });
        QTRY_COMPARE(gate.waiting(), 1);
        f.thread.quit();
        QTimer::singleShot(20, [&gate] { gate.open(); });
        f.thread.waitServingEvents();
        QVERIFY(!f.thread.isRunning());
        QCOMPARE(calls(), QStringList("worker: done"));
    }

    void quitAndWait_mayComeFromAStatussHandler()
    {
        ThreadFixture *fixture = nullptr;
        std::atomic<int> ended { 0 };
        ThreadFixture f([&](int status) {
            if (status != 1)
                return;
            fixture->thread.quit();
            fixture->thread.waitServingEvents();
            ended = fixture->thread.isRunning() ? -1 : 1;
        });
        fixture = &f;
        f.start();
        f.postStatus(1);
        f.postStatus(2); // told of from within the first one's handler
        QTRY_COMPARE(ended.load(), 1);
        QCOMPARE(calls(), (QStringList { "worker: status(1)", "worker: told(1)",
                                         "worker: status(2)", "worker: told(2)" }));
    }

    void quitAndWait_mayComeFromAHandlerThatDeletesTheThread()
    {
        std::unique_ptr<ThreadFixture> f;
        f = std::make_unique<ThreadFixture>([&f](int) { f.reset(); });
        f->start();
        f->postStatus(1);
        QTRY_VERIFY(!f);
        QCOMPARE(calls(), (QStringList { "worker: status(1)", "worker: told(1)" }));
    }
};

QTEST_GUILESS_MAIN(TestWorkerThread)
#include "tst_ocelleworkerthread.moc"
