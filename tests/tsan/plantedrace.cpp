// SPDX-License-Identifier: BSD-3-Clause
// One thread's work seen by another, rightly and wrongly. ThreadSanitizer has to report the wrong
// way and nothing else; tst_tsansetup runs this program and looks.
#include <QCoreApplication>
#include <QEvent>
#include <QMutex>
#include <QSemaphore>
#include <QThread>

#include <atomic>
#include <cstdio>
#include <memory>
#include <string>

namespace {

constexpr int Rounds = 2000;

int g_shared = 0;
QMutex g_mutex;     // guards g_shared, in the case "mutex"
QSemaphore g_ready; // released after the last write, in the case "semaphore"
std::atomic<int> g_atomic { 0 };

void countPlain()
{
    for (int i = 0; i < Rounds; ++i) {
        ++g_shared;
        std::atomic_signal_fence(std::memory_order_seq_cst); // one write each round, please
    }
}

void countLocked()
{
    for (int i = 0; i < Rounds; ++i) {
        QMutexLocker locker(&g_mutex);
        ++g_shared;
    }
}

void countAtomic()
{
    for (int i = 0; i < Rounds; ++i)
        ++g_atomic;
}

void countAndRelease()
{
    countPlain();
    g_ready.release();
}

/*! Runs \a other on a thread and meanwhile \a here on this one. */
void runBoth(void (*other)(), void (*here)())
{
    std::unique_ptr<QThread> thread(QThread::create(other));
    thread->start();
    here();
    thread->wait();
}

class Receiver : public QObject
{
protected:
    void customEvent(QEvent *) override
    {
        countPlain();
        thread()->quit();
    }
};

/*! Writes, posts an event whose receiver on another thread goes on writing, waits, and reads. */
void handOverByEvent()
{
    QThread thread;
    Receiver receiver;
    receiver.moveToThread(&thread);
    thread.start();
    countPlain();
    QCoreApplication::postEvent(&receiver, new QEvent(QEvent::User));
    thread.wait();
    countPlain();
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const std::string way = argc == 2 ? argv[1] : "";
    if (way == "race")
        runBoth(countPlain, countPlain);
    else if (way == "mutex")
        runBoth(countLocked, countLocked);
    else if (way == "atomic")
        runBoth(countAtomic, countAtomic);
    else if (way == "semaphore")
        runBoth(countAndRelease, [] {
            g_ready.acquire();
            countPlain();
        });
    else if (way == "event")
        handOverByEvent();
    else
        return 2;
    std::printf("%d\n", g_shared + g_atomic);
    return 0;
}
