// SPDX-License-Identifier: BSD-3-Clause
#include "playcommand.h"

#include "console.h"
#include "decodereport.h"
#include "environment.h"
#include "frameimage.h"
#include "interruption.h"

#include <QCoreApplication>

namespace Tool {
namespace {

constexpr int TickInterval = 1000; // ms
constexpr int ProgressTicks = 10;  // between two lines where they do not replace each other

} // namespace

PlayCommand::PlayCommand(const PlayOptions &options, QObject *parent)
    : QObject(parent)
    , m_options(options)
{
    if (options.frames)
        m_surface.setLimit(*options.frames);
    m_player.setRealTime(options.realTime);
    const auto stop = [this] {
        m_isInterrupted = true;
        m_player.stop();
    };
    connect(&m_surface, &PreviewSurface::pictureTaken, this,
            [this] { m_player.onPicture(m_surface.frame()); });
    connect(&m_surface, &PreviewSurface::firstPictureTaken, this, [this] {
        if (m_options.window && !hasDisplay())
            printNote(QStringLiteral("There is no display, so it plays without a window."));
        if (m_options.realTime && !m_options.frames)
            printNote(QStringLiteral("%1 plays; Ctrl-C ends this.").arg(m_options.file));
    });
    connect(&m_surface, &PreviewSurface::limitReached, this, stop, Qt::QueuedConnection);
    connect(&m_player, &FilePlayer::noticed, this, printNote);
    connect(&m_player, &FilePlayer::failed, this, &PlayCommand::fail);
    connect(
            &m_player, &FilePlayer::ended, this, [] { QCoreApplication::exit(); },
            Qt::QueuedConnection);
    connect(&m_tick, &QTimer::timeout, this, &PlayCommand::onTick);
}

PlayCommand::~PlayCommand() = default;

int PlayCommand::run()
{
    QString error;
    bool isUsage = false;
    if (!m_player.open(m_options.file, m_options.codec, &error, &isUsage)) {
        printError(error);
        return isUsage ? Usage : Failure;
    }
    const StoredTurn turn = m_player.stream().properties().turn;
    m_surface.setTurn(turn.degrees);
    if (!turn.isExact)
        printNote(turnNote(m_options.file, turn));
    Interruption interruption;
    connect(&interruption, &Interruption::interrupted, this, [this] {
        m_isInterrupted = true;
        m_player.stop();
    });
    QTimer::singleShot(0, this, [this] { // in the event loop
        if (m_options.window && hasDisplay())
            openWindow();
        m_player.start();
    });
    m_tick.start(TickInterval);
    QCoreApplication::exec();
    m_tick.stop();
    m_window.reset();
    endProgress();
    if (!m_hasFailed && m_surface.presented() == 0 && !m_isInterrupted)
        fail(QStringLiteral("%1: no picture came out of it").arg(m_options.file));
    const bool isSaved = saveSnapshot();
    const bool isPrinted = printReport();
    return isSaved && isPrinted ? exitCode() : int(Failure);
}

void PlayCommand::openWindow()
{
    m_window = std::make_unique<PreviewWindow>(&m_surface);
    m_window->setTitle(m_options.file);
    connect(m_window.get(), &PreviewWindow::closed, this, [this] {
        m_isInterrupted = true;
        m_player.stop();
    });
    connect(&m_surface, &PreviewSurface::pictureTaken, m_window.get(),
            [this] { m_window->update(); });
    const StreamReader::Properties &video = m_player.stream().properties();
    m_window->open(video.turn.degrees % 180 == 0 ? video.size : video.size.transposed());
}

void PlayCommand::onTick()
{
    ++m_ticks;
    if (progressIsLive() || m_ticks % ProgressTicks == 0)
        printProgress(m_player.progress());
}

void PlayCommand::fail(const QString &error)
{
    m_hasFailed = true;
    printError(error);
}

bool PlayCommand::saveSnapshot()
{
    if (m_options.snapshot.isEmpty())
        return true;
    QString error = QStringLiteral("there is no picture");
    if (m_surface.frame().isValid()) {
        if (saveImage(m_surface.image(), m_options.snapshot, &error)) {
            m_snapshot = m_options.snapshot;
            return true;
        }
    }
    printError(QStringLiteral("the snapshot %1 was not saved: %2").arg(m_options.snapshot, error));
    return false;
}

bool PlayCommand::printReport()
{
    DecodeReport report = DecodeReport::of(m_player, m_options.file, &m_surface);
    if (m_surface.frame().isValid())
        report.size = m_surface.viewport().size();
    if (!m_options.json)
        return m_surface.presented() == 0 || printLine(toText(report));
    QJsonObject json = toJson(report);
    if (!m_snapshot.isEmpty())
        json.insert(QStringLiteral("snapshot"), m_snapshot);
    return printJson(QJsonDocument(json), QJsonDocument::Compact);
}

int PlayCommand::exitCode() const
{
    const DecodeReport report = DecodeReport::of(m_player, m_options.file, &m_surface);
    return m_hasFailed || m_player.hasTrouble() || report.lost > 0 ? Failure : Success;
}

} // namespace Tool
