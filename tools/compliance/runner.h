// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "check.h"
#include "options.h"

#include <functional>
#include <memory>
#include <thread>
#include <vector>

namespace Compliance {

/*!
 * Finds what the platform has and makes the checks on it, each on a thread of its own.
 *
 * Threads: the main thread, whose events it keeps moving meanwhile.
 * Errors:  a call that does not return fails its check; the checks after it are skipped, since what
 *          it holds cannot be known. Its thread is waited for on destruction, which a program that
 *          finds isStuck() had better not wait for.
 */
class Runner
{
public:
    using OnResult = std::function<void(const Result &)>;

    explicit Runner(const Options &options);
    ~Runner();

    /*! \a onResult is told each result as it comes. */
    std::vector<Result> run(const OnResult &onResult);
    bool isStuck() const { return m_isStuck; }
    /*! Why the options choose nothing, so that nothing was run; empty where they choose something. */
    const QString &wrongChoice() const { return m_wrongChoice; }

private:
    Outcome bounded(const std::function<Outcome(Session &)> &body);
    Outcome discover();
    bool isChosen(const Check &check) const;
    QString findWrongChoice() const;
    std::vector<Device> devicesFor(const Check &check) const;
    void runCheck(const Check &check, const OnResult &onResult);
    void add(const Check &check, const Device &device, const OnResult &onResult);
    void report(const Result &result, const OnResult &onResult);

    const Options m_options;
    std::vector<std::unique_ptr<Session>> m_sessions; // oldest first
    std::vector<Device> m_devices;
    std::vector<Result> m_results;
    std::thread m_stuckThread;
    bool m_isStuck = false;
    QString m_wrongChoice;
};

/*! Whether \a text matches a pattern with * and ?; an empty pattern matches all. */
bool matches(const QString &pattern, const QString &text);

} // namespace Compliance
