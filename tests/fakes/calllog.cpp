// SPDX-License-Identifier: BSD-3-Clause
#include "calllog.h"

#include <pthread.h>

namespace {

QString currentThreadName()
{
    char name[16] = {};
    pthread_getname_np(pthread_self(), name, sizeof name);
    return QString::fromUtf8(name);
}

} // namespace

CallLog &CallLog::instance()
{
    static CallLog log;
    return log;
}

void CallLog::add(const QString &object, const QString &what)
{
    const Call call { object, what, std::this_thread::get_id(), currentThreadName() };
    Observer observer;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_calls.append(call);
        observer = m_observer;
    }
    if (observer)
        observer(call);
}

void CallLog::clear()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_calls.clear();
    m_observer = nullptr;
}

void CallLog::setObserver(Observer observer)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_observer = std::move(observer);
}

QVector<Call> CallLog::calls() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    QVector<Call> copy = m_calls;
    copy.detach(); // the other threads keep appending to their own
    return copy;
}

QStringList CallLog::texts(const QString &objects) const
{
    QStringList result;
    for (const Call &call : calls()) {
        if (call.object.startsWith(objects))
            result.append(call.text());
    }
    return result;
}

int CallLog::count(const QString &text) const
{
    return texts().count(text);
}

int CallLog::indexOf(const QString &text) const
{
    return texts().indexOf(text);
}

QStringList CallLog::threadNames(const QString &objects) const
{
    QStringList result;
    for (const Call &call : calls()) {
        if (call.object.startsWith(objects) && !result.contains(call.threadName))
            result.append(call.threadName);
    }
    return result;
}
