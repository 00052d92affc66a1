// SPDX-License-Identifier: BSD-3-Clause
#include "watchcommand.h"

#include "backendplugin.h"
#include "cameralist.h"
#include "commandline.h"
#include "console.h"
#include "interruption.h"

#include <QCoreApplication>
#include <QJsonObject>

namespace Tool {
namespace {
constexpr int Interval = 250; // ms
} // namespace

WatchCommand::WatchCommand(bool json, QObject *parent)
    : QObject(parent)
    , m_json(json)
{
    connect(&m_timer, &QTimer::timeout, this, &WatchCommand::look);
}

int WatchCommand::run()
{
    QString error;
    if (availableCameras().isEmpty() && !backendPlugin(&error)) { // none would ever come
        printError(error);
        return Failure;
    }
    Interruption interruption;
    connect(&interruption, &Interruption::interrupted, this,
            [] { QCoreApplication::exit(Success); });
    m_timer.start(Interval);
    QTimer::singleShot(0, this, &WatchCommand::look);
    return QCoreApplication::exec();
}

void WatchCommand::look()
{
    QMap<QString, QString> cameras;
    for (const QCameraInfo &camera : availableCameras())
        cameras.insert(camera.deviceName(), camera.description());
    const QMap<QString, QString> before = std::exchange(m_cameras, cameras);
    for (auto camera = before.begin(); camera != before.end(); ++camera) {
        if (!cameras.contains(camera.key()))
            tell(QStringLiteral("removed"), camera.key(), camera.value());
    }
    const QString event = m_first ? QStringLiteral("present") : QStringLiteral("added");
    for (auto camera = cameras.cbegin(); camera != cameras.cend(); ++camera) {
        if (!before.contains(camera.key()))
            tell(event, camera.key(), camera.value());
    }
    m_first = false;
}

void WatchCommand::tell(const QString &event, const QString &id, const QString &name)
{
    const QJsonObject object { { QStringLiteral("event"), event },
                               { QStringLiteral("id"), id },
                               { QStringLiteral("name"), name } };
    const bool written = m_json ? printJson(QJsonDocument(object), QJsonDocument::Compact)
                                : printLine(QStringLiteral("%1 %2  %3").arg(event, id, name));
    if (!written)
        QCoreApplication::exit(Failure);
}

} // namespace Tool
