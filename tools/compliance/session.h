// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "options.h"
#include "pictureviewer.h"

#include <QString>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace Compliance {

/*!
 * What one check works with: bounded calls, bounded waits, and eyes for pictures.
 *
 * Threads: built and destroyed on the main thread. call(), waitUntil(), staysQuiet() and guard(),
 *          thrown() and keep() on the check's thread; wake() on any; the rest on the main thread.
 * Owner:   the Runner. It outlives the run, so that a platform which calls back too late finds its
 *          listeners, whose owner this is.
 */
class Session
{
public:
    explicit Session(const Options &options);

    // Check's thread
    const Options &options() const { return m_options; }
    const Patience &patience() const { return m_options.patience; }
    PictureViewer &viewer() { return m_viewer; }

    /*! Calls the platform; the Runner gives up where that does not come back. */
    template <class Function>
    auto call(const QString &name, Function function)
    {
        const Mark mark(this, name);
        return function();
    }

    /*! Waits for \a isDone, which is asked again after each wake(); false if that takes too long. */
    bool waitUntil(const std::function<bool()> &isDone, int milliseconds);
    /*! Whether \a isBroken stays false for as long as that is waited for. */
    bool staysQuiet(const std::function<bool()> &isBroken);

    /*! Runs \a body; notes what it throws, for a platform that throws fails the check. */
    void guard(const std::function<void()> &body);
    const QString &thrown() const { return m_thrown; } // first; empty where nothing was

    /*! Makes an object that lives as long as this. */
    template <class Kept, class... Arguments>
    Kept *keep(Arguments &&...arguments)
    {
        auto kept = std::make_shared<Kept>(std::forward<Arguments>(arguments)...);
        m_kept.push_back(kept);
        return kept.get();
    }

    // Any thread
    void wake();

    // Main thread
    /*! What has gone on for too long; empty as long as nothing has. */
    QString overdue() const;

private:
    class Mark
    {
    public:
        Mark(Session *session, const QString &name)
            : m_session(session)
        {
            session->setActivity(name);
        }
        ~Mark() { m_session->setActivity(QString()); }

    private:
        Session *const m_session;
    };

    void setActivity(const QString &name);

    const Options m_options;
    PictureViewer m_viewer;
    std::vector<std::shared_ptr<void>> m_kept; // check's thread
    QString m_thrown;                          // check's thread

    std::mutex m_wakeMutex; // guards m_wakes
    std::condition_variable m_woken;
    unsigned m_wakes = 0;

    mutable std::mutex m_activityMutex; // guards the members below
    QString m_activity;                 // the call that goes on
    QString m_lastActivity;             // the last one that was made
    std::chrono::steady_clock::time_point m_since;
};

} // namespace Compliance
