// SPDX-License-Identifier: BSD-3-Clause
// What the distribution's Qt does to order threads, told to ThreadSanitizer. Qt is not compiled
// with it, so without this every mutex-guarded member would be reported as a race.
//
// Linked into the programs, whose exported symbols come before Qt's: calls of these functions from
// our own code and plugins arrive here, are passed on, and are marked as acquiring or releasing.
// Calls inside Qt's libraries are bound there and stay invisible. So is the handing over of data by
// a queued signal alone, which our own code therefore does not rely on.
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEvent>
#include <QMutex>
#include <QObject>
#include <QSemaphore>
#include <QThread>
#include <QWaitCondition>

#include <dlfcn.h>
#include <pthread.h>
#include <sanitizer/tsan_interface.h>

#include <cstdio>
#include <cstdlib>

namespace {

/*! Qt's own function with this mangled name, also where only a plugin has brought its library. */
void *next(const char *name)
{
    void *function = dlsym(RTLD_NEXT, name);
    if (!function) {
        if (void *const library = dlopen("libQt5Multimedia.so.5", RTLD_LAZY | RTLD_NOLOAD))
            function = dlsym(library, name);
    }
    if (!function) {
        std::fprintf(stderr, "%s is not in this Qt; tests/tsan has to follow it\n", name);
        std::abort();
    }
    return function;
}

template <typename Signature>
Signature *nextAs(const char *name)
{
    return reinterpret_cast<Signature *>(next(name));
}

} // namespace

// A mutex orders what came before unlock() before what comes after lock().

void QMutex::lock() QT_MUTEX_LOCK_NOEXCEPT
{
    static const auto real = nextAs<void(QMutex *)>("_ZN6QMutex4lockEv");
    real(this);
    __tsan_acquire(this);
}

bool QMutex::tryLock(int timeout) QT_MUTEX_LOCK_NOEXCEPT
{
    static const auto real = nextAs<bool(QMutex *, int)>("_ZN6QMutex7tryLockEi");
    const bool locked = real(this, timeout);
    if (locked)
        __tsan_acquire(this);
    return locked;
}

void QMutex::unlock() noexcept
{
    static const auto real = nextAs<void(QMutex *)>("_ZN6QMutex6unlockEv");
    __tsan_release(this);
    real(this);
}

// Waiting for a condition gives the mutex away and takes it again.

bool QWaitCondition::wait(QMutex *mutex, QDeadlineTimer deadline)
{
    static const auto real = nextAs<bool(QWaitCondition *, QMutex *, QDeadlineTimer)>(
            "_ZN14QWaitCondition4waitEP6QMutex14QDeadlineTimer");
    __tsan_release(mutex);
    const bool woken = real(this, mutex, deadline);
    __tsan_acquire(mutex);
    return woken;
}

bool QWaitCondition::wait(QMutex *mutex, unsigned long time)
{
    static const auto real = nextAs<bool(QWaitCondition *, QMutex *, unsigned long)>(
            "_ZN14QWaitCondition4waitEP6QMutexm");
    __tsan_release(mutex);
    const bool woken = real(this, mutex, time);
    __tsan_acquire(mutex);
    return woken;
}

// A semaphore orders what came before release() before what comes after acquire().

void QSemaphore::acquire(int n)
{
    static const auto real = nextAs<void(QSemaphore *, int)>("_ZN10QSemaphore7acquireEi");
    real(this, n);
    __tsan_acquire(this);
}

bool QSemaphore::tryAcquire(int n)
{
    static const auto real = nextAs<bool(QSemaphore *, int)>("_ZN10QSemaphore10tryAcquireEi");
    const bool acquired = real(this, n);
    if (acquired)
        __tsan_acquire(this);
    return acquired;
}

bool QSemaphore::tryAcquire(int n, int timeout)
{
    static const auto real = nextAs<bool(QSemaphore *, int, int)>("_ZN10QSemaphore10tryAcquireEii");
    const bool acquired = real(this, n, timeout);
    if (acquired)
        __tsan_acquire(this);
    return acquired;
}

void QSemaphore::release(int n)
{
    static const auto real = nextAs<void(QSemaphore *, int)>("_ZN10QSemaphore7releaseEi");
    __tsan_release(this);
    real(this, n);
}

// An event that we post carries what came before to the receiver's customEvent(). (An event() of
// its own is entered before this.) What a thread did in its objects' event handlers is visible to
// whoever waited for the thread.

void QCoreApplication::postEvent(QObject *receiver, QEvent *event, int priority)
{
    static const auto real = nextAs<void(QObject *, QEvent *, int)>(
            "_ZN16QCoreApplication9postEventEP7QObjectP6QEventi");
    __tsan_release(event);
    __tsan_release(receiver);
    real(receiver, event, priority);
}

void QCoreApplication::removePostedEvents(QObject *receiver, int type)
{
    static const auto real =
            nextAs<void(QObject *, int)>("_ZN16QCoreApplication18removePostedEventsEP7QObjecti");
    __tsan_acquire(receiver); // it destroys the events
    real(receiver, type);
}

bool QObject::event(QEvent *event)
{
    static const auto real = nextAs<bool(QObject *, QEvent *)>("_ZN7QObject5eventEP6QEvent");
    __tsan_acquire(event);
    const bool handled = real(this, event);
    __tsan_release(QThread::currentThread());
    return handled;
}

bool QThread::wait(QDeadlineTimer deadline)
{
    static const auto real =
            nextAs<bool(QThread *, QDeadlineTimer)>("_ZN7QThread4waitE14QDeadlineTimer");
    const bool finished = real(this, deadline);
    if (finished)
        __tsan_acquire(this);
    return finished;
}

bool QThread::wait(unsigned long time)
{
    static const auto real = nextAs<bool(QThread *, unsigned long)>("_ZN7QThread4waitEm");
    const bool finished = real(this, time);
    if (finished)
        __tsan_acquire(this);
    return finished;
}

// A video frame is shared by counting references. Whoever lets one go may be the last but one, and
// what it did with the picture comes before what the last one leads to. (These two are known by their
// mangled names: not every program links Qt Multimedia.)

namespace {

void letGo(const void *frame)
{
    void *const shared = *static_cast<void *const *>(frame); // its only member
    __tsan_release(shared);
    __tsan_acquire(shared);
}

} // namespace

extern "C" __attribute__((visibility("default"))) void _ZN11QVideoFrameD1Ev(void *frame)
{
    static const auto real = nextAs<void(void *)>("_ZN11QVideoFrameD1Ev");
    letGo(frame);
    real(frame);
}

extern "C" __attribute__((visibility("default"))) void *_ZN11QVideoFrameaSERKS_(void *frame,
                                                                                const void *other)
{
    static const auto real = nextAs<void *(void *, const void *)>("_ZN11QVideoFrameaSERKS_");
    letGo(frame);
    return real(frame, other);
}

// What runs once (std::call_once(), the function of QThread::create()) runs inside this call, during
// which ThreadSanitizer's own version would look away. The C library's does not.

extern "C" __attribute__((visibility("default"))) int pthread_once(pthread_once_t *once,
                                                                   void (*function)())
{
    using Function = int(pthread_once_t *, void (*)());
    static Function *const real = reinterpret_cast<Function *>(
            dlsym(dlopen("libc.so.6", RTLD_LAZY | RTLD_NOLOAD), "pthread_once"));
    thread_local pthread_once_t *running = nullptr;
    thread_local void (*runs)() = nullptr;
    running = once;
    runs = function;
    const int result = real(once, [] {
        pthread_once_t *const ran = running; // the function may come here again
        runs();
        __tsan_release(ran);
    });
    __tsan_acquire(once);
    return result;
}
