// SPDX-License-Identifier: BSD-3-Clause
#include "session.h"

#include <algorithm>
#include <exception>

namespace Compliance {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

Session::Session(const Options &options)
    : m_options(options)
    , m_viewer([this] { wake(); })
    , m_since(Clock::now())
{
}

bool Session::waitUntil(const std::function<bool()> &isDone, int limit)
{
    constexpr milliseconds turn(100); // to say now and then that this is no hanging call
    const auto end = Clock::now() + milliseconds(limit);
    for (;;) {
        setActivity(QString());
        unsigned wakes = 0;
        {
            const std::lock_guard<std::mutex> lock(m_wakeMutex);
            wakes = m_wakes;
        }
        if (isDone())
            return true;
        const auto now = Clock::now();
        if (now >= end)
            return false;
        std::unique_lock<std::mutex> lock(m_wakeMutex);
        m_woken.wait_until(lock, std::min(end, now + turn), [&] { return m_wakes != wakes; });
    }
}

bool Session::staysQuiet(const std::function<bool()> &isBroken)
{
    return !waitUntil(isBroken, patience().quiet);
}

void Session::guard(const std::function<void()> &body)
{
    QString thrown;
    try {
        body();
        return;
    } catch (const std::exception &error) {
        thrown = QString::fromUtf8(error.what());
    } catch (...) {
        thrown = QStringLiteral("something that is no std::exception");
    }
    if (m_thrown.isEmpty())
        m_thrown = thrown.isEmpty() ? QStringLiteral("an exception without a text") : thrown;
}

void Session::wake()
{
    {
        const std::lock_guard<std::mutex> lock(m_wakeMutex);
        ++m_wakes;
    }
    m_woken.notify_all();
}

QString Session::overdue() const
{
    const std::lock_guard<std::mutex> lock(m_activityMutex);
    if (Clock::now() - m_since < milliseconds(m_options.patience.call))
        return {};
    const QString limit = QStringLiteral(" within %1 s").arg(m_options.patience.call / 1000.0);
    if (!m_activity.isEmpty())
        return m_activity + QStringLiteral(" did not return") + limit;
    return QStringLiteral("the platform did not let go of what was dropped after ") +
           m_lastActivity + limit;
}

void Session::setActivity(const QString &name)
{
    const std::lock_guard<std::mutex> lock(m_activityMutex);
    m_activity = name;
    if (!name.isEmpty())
        m_lastActivity = name;
    m_since = Clock::now();
}

} // namespace Compliance
