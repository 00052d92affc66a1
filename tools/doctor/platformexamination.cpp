// SPDX-License-Identifier: BSD-3-Clause
#include "platformexamination.h"

#include "standinfunctions.h"

#include <QFile>
#include <QLibraryInfo>
#include <QRegularExpression>
#include <QStringList>
#include <QVersionNumber>

#include <ocelle/cameramanager.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

namespace Doctor {
namespace {

using namespace Veltra::Ocelle;
using Level = Finding::Level;

// What the platform's hardware codecs are reached through.
Findings examineRenderNodes()
{
    Findings findings;
    std::error_code ignored;
    for (const auto &entry : std::filesystem::directory_iterator("/dev/dri", ignored)) {
        const std::string path = entry.path().string();
        if (entry.path().filename().string().rfind("renderD", 0) != 0 ||
            access(path.c_str(), R_OK | W_OK) == 0)
            continue;
        findings.append({ Level::Note, QStringLiteral("devices"),
                          QStringLiteral("%1 may not be used, so codecs run on the processor")
                                  .arg(QString::fromStdString(path)),
                          QStringLiteral("adduser USER render as root, then log in again") });
    }
    return findings;
}

// Of a value of OCELLE_CAMERAS, as they are written there.
QStringList entriesOf(const QString &cameras)
{
    QStringList entries;
    static const QRegularExpression part(QStringLiteral("(?:[^,\\\\]|\\\\.)+"));
    auto parts = part.globalMatch(cameras);
    while (parts.hasNext())
        entries.append(parts.next().captured().trimmed());
    return entries;
}

// Entries of OCELLE_CAMERAS that can be read and give no camera all the same; for where there is none.
Findings barrenEntries(const QString &cameras)
{
    Findings findings;
    for (const QString &entry : entriesOf(cameras)) {
        const bool isFolder = entry.startsWith(QLatin1String("dir:"));
        const auto problems = Tool::problemsOfSelection(QFile::encodeName(entry).constData());
        if (!(isFolder || entry.startsWith(QLatin1String("file:"))) || !problems ||
            !problems->empty())
            continue; // what is wrong with it is among the findings on the environment
        findings.append(
                { Level::Problem, QStringLiteral("cameras"),
                  QStringLiteral("OCELLE_CAMERAS: no camera came of %1").arg(entry),
                  isFolder ? QStringLiteral(
                                     "put video files into that folder that ocelle play plays")
                           : QStringLiteral("name a video file that ocelle play plays") });
    }
    return findings;
}

bool isDenied(const CameraNode &node)
{
    return node.finding.find("permission denied") != std::string::npos;
}

// For one that is not offered; the sentence on it names what is particular.
QString remedyFor(const CameraNode &node)
{
    if (isDenied(node))
        return QStringLiteral(
                "adduser USER video as root, then log in again; if the sentence names "
                "another way, do that");
    if (node.finding.rfind("not offered", 0) == 0)
        return QStringLiteral("nothing, where another node of that camera is offered; else the "
                              "camera is of a kind that is not supported");
    return QStringLiteral("do what the sentence says, then examine it again with ocelle doctor "
                          "--cameras");
}

} // namespace

Findings examineVersions()
{
    const QVersionNumber built = QVersionNumber::fromString(QLatin1String(QT_VERSION_STR));
    const QVersionNumber running = QLibraryInfo::version();
    const QString area = QStringLiteral("versions");
    const QString text = QStringLiteral("Qt %1 runs, this program was built with %2")
                                 .arg(running.toString(), built.toString());
    if (running.majorVersion() == built.majorVersion() && running >= built)
        return { { Level::Good, area, text, QString() } };
    return { { Level::Problem, area, text,
               QStringLiteral("run it with the Qt that it was built with, or a later one") } };
}

int cameraCount()
{
    CameraManager *const manager = OcelleManager();
    return manager ? manager->getNumberOfCameras() : 0;
}

bool leavesNodesOut(const QString &cameras)
{
    return !entriesOf(cameras).contains(QStringLiteral("v4l2"));
}

Findings judgeNodes(const std::vector<CameraNode> &nodes, NodeUse use)
{
    const QString area = QStringLiteral("devices");
    if (nodes.empty())
        return { { use == NodeUse::Needed ? Level::Problem : Level::Note, area,
                   QStringLiteral("there is no video node"),
                   QStringLiteral("plug a camera in; where one is, dmesg may tell that the kernel "
                                  "has no driver for it") } };
    Findings findings;
    for (const CameraNode &node : nodes) {
        const QString text =
                QStringLiteral("%1 \"%2\": %3")
                        .arg(QString::fromStdString(node.node), QString::fromStdString(node.name),
                             QString::fromStdString(node.finding));
        // A camera often has nodes that are no cameras; one that is closed to us always counts.
        const bool isProblem = isDenied(node) && use != NodeUse::LeftOut;
        if (node.isOffered)
            findings.append({ Level::Good, area, text, QString() });
        else
            findings.append(
                    { isProblem ? Level::Problem : Level::Note, area, text, remedyFor(node) });
    }
    const bool isAnyOffered = std::any_of(nodes.begin(), nodes.end(),
                                          [](const CameraNode &node) { return node.isOffered; });
    if (!isAnyOffered && use == NodeUse::Needed)
        findings.append({ Level::Problem, area, QStringLiteral("none of the nodes can be used"),
                          QStringLiteral("see each of them above") });
    return findings;
}

Findings examineNodes(bool hasCameras)
{
    const auto nodes = Tool::examineVideoNodes();
    if (!nodes)
        return Findings {
            { Level::Note, QStringLiteral("devices"),
              QStringLiteral("video nodes are not examined: the platform libraries are "
                             "a device's own"),
              QStringLiteral("ocelle compliance checks what those do") }
        } + examineRenderNodes();
    const char *const variable = "OCELLE_CAMERAS";
    const bool isLeftOut =
            qEnvironmentVariableIsSet(variable) && leavesNodesOut(qEnvironmentVariable(variable));
    const NodeUse use = isLeftOut    ? NodeUse::LeftOut
                        : hasCameras ? NodeUse::Welcome
                                     : NodeUse::Needed;
    return judgeNodes(*nodes, use) + examineRenderNodes();
}

Findings judgeCodecs(const std::vector<VideoCodecInfo> &codecs)
{
    const struct
    {
        CodecType type;
        const char *name;
        const char *libraries;
    } kinds[] = { { CodecType::H264, "h264", "libx264" },
                  { CodecType::H265, "h265", "libx265" },
                  { CodecType::VP8, "vp8", "libvpx" },
                  { CodecType::VP9, "vp9", "libvpx" } };
    Findings findings;
    QStringList present;
    for (const auto &kind : kinds) {
        for (const bool encoder : { true, false }) {
            const QString what = QLatin1String(kind.name) + (encoder ? QStringLiteral(" encoder")
                                                                     : QStringLiteral(" decoder"));
            const auto is = [&](const VideoCodecInfo &codec) {
                return codec.type == kind.type && codec.isEncoder == encoder;
            };
            if (std::any_of(codecs.begin(), codecs.end(), is))
                present.append(what);
            else
                findings.append(
                        { Level::Note, QStringLiteral("codecs"),
                          QStringLiteral("there is no %1").arg(what),
                          QStringLiteral("on a desktop install %1; on a device the platform "
                                         "decides")
                                  .arg(encoder ? QLatin1String(kind.libraries)
                                               : QLatin1String("libavcodec")) });
        }
    }
    if (!present.isEmpty())
        findings.prepend({ Level::Good, QStringLiteral("codecs"),
                           present.join(QStringLiteral(", ")), QString() });
    return findings;
}

Findings examinePlatform()
{
    Findings findings;
    const int cameras = cameraCount();
    if (cameras > 0)
        findings.append({ Level::Good, QStringLiteral("cameras"),
                          QStringLiteral("cameras that the platform offers: %1").arg(cameras),
                          QString() });
    else
        findings.append({ Level::Problem, QStringLiteral("cameras"),
                          QStringLiteral("the platform offers no camera"),
                          QStringLiteral("see the findings on environment and devices") });
    if (cameras == 0)
        findings += barrenEntries(QString::fromLocal8Bit(qgetenv("OCELLE_CAMERAS")));
    CodecManager *const codecs = OcelleCodecManager();
    return findings +
           judgeCodecs(codecs ? codecs->getVideoCodecs() : std::vector<VideoCodecInfo>());
}

} // namespace Doctor
