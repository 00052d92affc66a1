// SPDX-License-Identifier: BSD-3-Clause
#include "runner.h"

#include "discovery.h"
#include "session.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QRegularExpression>
#include <QTimer>

#include <algorithm>
#include <atomic>

namespace Compliance {

bool matches(const QString &pattern, const QString &text)
{
    if (pattern.isEmpty())
        return true;
    QString expression = QRegularExpression::escape(pattern);
    expression.replace(QLatin1String("\\*"), QLatin1String(".*"));
    expression.replace(QLatin1String("\\?"), QLatin1String("."));
    return QRegularExpression(QRegularExpression::anchoredPattern(expression),
                              QRegularExpression::DotMatchesEverythingOption)
            .match(text)
            .hasMatch();
}

Runner::Runner(const Options &options)
    : m_options(options)
{
}

Runner::~Runner()
{
    if (m_stuckThread.joinable())
        m_stuckThread.join();
}

std::vector<Result> Runner::run(const OnResult &onResult)
{
    QElapsedTimer clock;
    clock.start();
    const Outcome found = discover();
    if (found.kind == Outcome::Kind::Pass)
        m_wrongChoice = findWrongChoice();
    if (!m_wrongChoice.isEmpty())
        return m_results;
    report({ QStringLiteral("platform.discovery"),
             QStringLiteral("the libraries tell what cameras and codecs there are"), QString(),
             found, double(clock.elapsed()) / 1000 },
           onResult);
    for (const Check &check : allChecks()) {
        if (isChosen(check))
            runCheck(check, onResult);
    }
    return m_results;
}

bool Runner::isChosen(const Check &check) const
{
    return matches(m_options.only, QString::fromLatin1(check.name));
}

QString Runner::findWrongChoice() const
{
    if (m_options.device.isEmpty())
        return {}; // a check without a device is skipped, and says so
    const auto isWanted = [this](const Device &device) {
        return !device.id.empty() && matches(m_options.device, QString::fromStdString(device.id));
    };
    if (std::none_of(m_devices.begin(), m_devices.end(), isWanted))
        return QStringLiteral("there is no device \"%1\"; ocelle list shows them")
                .arg(m_options.device);
    const auto &checks = allChecks();
    const auto isMade = [this](const Check &check) {
        return isChosen(check) && !devicesFor(check).empty();
    };
    if (std::none_of(checks.begin(), checks.end(), isMade))
        return QStringLiteral("no check \"%1\" is made on device \"%2\"")
                .arg(m_options.only, m_options.device);
    return {};
}

Outcome Runner::discover()
{
    const auto devices = std::make_shared<std::vector<Device>>(); // a stuck thread may keep it
    Outcome outcome =
            bounded([devices](Session &session) { return findDevices(session, devices.get()); });
    if (!m_isStuck)
        m_devices = *devices;
    return outcome;
}

// On its own thread, while events go on here: pictures are seen in them.
Outcome Runner::bounded(const std::function<Outcome(Session &)> &body)
{
    struct Shared
    {
        Outcome outcome;
        std::atomic<bool> isDone { false };
    };
    constexpr int interval = 5; // ms
    const auto shared = std::make_shared<Shared>();
    m_sessions.push_back(std::make_unique<Session>(m_options));
    Session *const session = m_sessions.back().get();
    std::thread thread([shared, session, body] {
        session->guard([&] { shared->outcome = body(*session); });
        if (!session->thrown().isEmpty() && shared->outcome.kind != Outcome::Kind::Fail)
            shared->outcome =
                    Outcome::fail(QStringLiteral("the platform throws: ") + session->thrown());
        shared->isDone = true;
    });
    QEventLoop loop;
    QTimer watch;
    QString overdue;
    QObject::connect(&watch, &QTimer::timeout, &loop, [&] {
        overdue = shared->isDone ? QString() : session->overdue();
        if (shared->isDone || !overdue.isEmpty())
            loop.quit();
    });
    watch.start(interval);
    loop.exec();
    if (shared->isDone) {
        thread.join();
        return shared->outcome;
    }
    m_isStuck = true;
    m_stuckThread = std::move(thread);
    return Outcome::fail(overdue);
}

std::vector<Device> Runner::devicesFor(const Check &check) const
{
    std::vector<Device> devices;
    if (check.kind == Device::Kind::Cameras || check.kind == Device::Kind::Codecs) {
        Device manager;
        manager.kind = check.kind;
        return { manager };
    }
    for (const Device &device : m_devices) {
        if (device.kind == check.kind &&
            matches(m_options.device, QString::fromStdString(device.id)))
            devices.push_back(device);
    }
    return devices;
}

void Runner::runCheck(const Check &check, const OnResult &onResult)
{
    const std::vector<Device> devices = devicesFor(check);
    for (const Device &device : devices)
        add(check, device, onResult);
    if (devices.empty() && m_options.device.isEmpty()) {
        const QString reason = m_isStuck ? QStringLiteral("the platform did not come back before")
                                         : QStringLiteral("there is none");
        report({ QString::fromLatin1(check.name), QString::fromLatin1(check.purpose), QString(),
                 Outcome::skip(reason), 0 },
               onResult);
    }
}

void Runner::add(const Check &check, const Device &device, const OnResult &onResult)
{
    QElapsedTimer clock;
    clock.start();
    const Outcome outcome =
            m_isStuck ? Outcome::skip(QStringLiteral("the platform did not come back before"))
                      : bounded([&check, device](Session &session) {
                            return check.run(session, device);
                        });
    report({ QString::fromLatin1(check.name), QString::fromLatin1(check.purpose),
             QString::fromStdString(device.id), outcome, double(clock.elapsed()) / 1000 },
           onResult);
}

void Runner::report(const Result &result, const OnResult &onResult)
{
    m_results.push_back(result);
    onResult(result);
}

} // namespace Compliance
