// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>
#include <mutex>
#include <thread>

/*! One recorded call: who was called with what, on which thread. */
struct Call
{
    QString object;         // "manager", "camera back", "output 1", or a test's own name
    QString what;           // "openCamera(back)"
    std::thread::id thread; // that made the call
    QString threadName;     // the kernel's name for it, at most 15 characters

    QString text() const { return object + QStringLiteral(": ") + what; }
};

/*!
 * What was called on all doubles together, in order.
 *
 * Threads: any thread.
 * Owner:   one per process; every test clears it.
 */
class CallLog
{
public:
    using Observer = std::function<void(const Call &)>;

    static CallLog &instance();

    void add(const QString &object, const QString &what);
    void clear();

    /*! Runs on the calling thread after each call is recorded, no lock held; empty for none. */
    void setObserver(Observer observer);

    QVector<Call> calls() const;
    /*! All texts, or those of the objects whose name starts with \a objects. */
    QStringList texts(const QString &objects = QString()) const;
    int count(const QString &text) const;
    /*! Position of the first \a text, or -1. */
    int indexOf(const QString &text) const;
    /*! Threads that made calls to objects whose name starts with \a objects, each named once. */
    QStringList threadNames(const QString &objects) const;

private:
    mutable std::mutex m_mutex; // guards the members below; never held while calling out
    QVector<Call> m_calls;
    Observer m_observer;
};
