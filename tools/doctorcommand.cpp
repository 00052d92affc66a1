// SPDX-License-Identifier: BSD-3-Clause
#include "doctorcommand.h"

#include "commandline.h"
#include "console.h"
#include "doctor/environmentexamination.h"
#include "doctor/platformexamination.h"
#include "doctor/pluginexamination.h"
#include "environment.h"
#include "standinfunctions.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonObject>
#include <QProcessEnvironment>
#include <QString>

#include <algorithm>

namespace Tool {
namespace {

using Veltra::Ocelle::CameraNode;

QJsonObject toJson(const CameraNode &node)
{
    return { { QStringLiteral("node"), QString::fromStdString(node.node) },
             { QStringLiteral("name"), QString::fromStdString(node.name) },
             { QStringLiteral("id"), QString::fromStdString(node.id) },
             { QStringLiteral("offered"), node.isOffered },
             { QStringLiteral("finding"), QString::fromStdString(node.finding) } };
}

QString toText(const CameraNode &node)
{
    const QString id = node.id.empty()
                               ? QString()
                               : QStringLiteral(" (%1)").arg(QString::fromStdString(node.id));
    return QStringLiteral("%1  \"%2\"%3: %4")
            .arg(QString::fromStdString(node.node), QString::fromStdString(node.name), id,
                 QString::fromStdString(node.finding));
}

} // namespace

int examineCameras(bool json)
{
    const auto examined = examineVideoNodes();
    if (!examined) {
        printError(QStringLiteral("the platform libraries of this device examine no video nodes"));
        return Failure;
    }
    const std::vector<CameraNode> &nodes = *examined;
    bool written = true;
    if (json) {
        QJsonArray all;
        for (const CameraNode &node : nodes)
            all.append(toJson(node));
        written = printJson(QJsonDocument(all), QJsonDocument::Indented);
    }
    for (const CameraNode &node : nodes)
        written = written && (json || printLine(toText(node)));
    if (!written)
        return Failure;
    if (nodes.empty())
        printNote(
                QStringLiteral("There is no video node: no camera is plugged in, or the kernel has "
                               "no driver for it (dmesg may tell)."));
    const bool isAnyOffered = std::any_of(nodes.begin(), nodes.end(),
                                          [](const CameraNode &node) { return node.isOffered; });
    return isAnyOffered ? Success : Failure;
}

int examineAll(bool json)
{
    const bool hasCameras = Doctor::cameraCount() > 0;
    const Doctor::Findings findings =
            Doctor::examinePlugins(QCoreApplication::libraryPaths(), ownPluginFolder()) +
            Doctor::examineVersions() +
            Doctor::examineEnvironment(QProcessEnvironment::systemEnvironment()) +
            Doctor::examinePlatform() + Doctor::examineNodes(hasCameras) + Doctor::examineChoice();
    bool isWritten = true;
    if (json)
        isWritten = printJson(QJsonDocument(Doctor::toJson(findings)), QJsonDocument::Indented);
    for (const Doctor::Finding &finding : findings)
        isWritten = isWritten && (json || printLine(Doctor::toText(finding)));
    return isWritten && !Doctor::hasProblem(findings) ? Success : Failure;
}

} // namespace Tool
