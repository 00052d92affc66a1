// SPDX-License-Identifier: BSD-3-Clause
#include "verifycommand.h"

#include "console.h"
#include "decodereport.h"
#include "interruption.h"

#include <QCoreApplication>
#include <QVideoSurfaceFormat>

namespace Tool {
namespace {

constexpr int TickInterval = 1000; // ms
constexpr int ProgressTicks = 10;  // between two lines where they do not replace each other

} // namespace

VerifyCommand::VerifyCommand(const VerifyOptions &options, QObject *parent)
    : QObject(parent)
    , m_options(options)
{
    connect(&m_surface, &RecordSurface::pictureTaken, this, &VerifyCommand::onPicture);
    connect(&m_player, &FilePlayer::noticed, this, printNote);
    connect(&m_player, &FilePlayer::failed, this, &VerifyCommand::fail);
    connect(
            &m_player, &FilePlayer::ended, this, [] { QCoreApplication::exit(); },
            Qt::QueuedConnection);
    connect(&m_tick, &QTimer::timeout, this, &VerifyCommand::onTick);
}

int VerifyCommand::run()
{
    QString error;
    bool isUsage = false;
    if (!m_player.open(m_options.file, m_options.codec, &error, &isUsage)) {
        printError(error);
        return isUsage ? Usage : Failure;
    }
    Interruption interruption;
    connect(&interruption, &Interruption::interrupted, this, [this] {
        fail(QStringLiteral("interrupted"));
        m_player.stop();
    });
    QTimer::singleShot(0, this, [this] { m_player.start(); }); // in the event loop
    m_tick.start(TickInterval);
    QCoreApplication::exec();
    m_tick.stop();
    endProgress();
    return report();
}

void VerifyCommand::onPicture(const QVideoFrame &frame)
{
    m_check.add(patternNumber(frame, m_surface.surfaceFormat().viewport()));
    m_player.onPicture(frame);
}

void VerifyCommand::onTick()
{
    ++m_ticks;
    if (progressIsLive() || m_ticks % ProgressTicks == 0)
        printProgress(m_player.progress());
}

void VerifyCommand::fail(const QString &error)
{
    m_hasFailed = true;
    printError(error);
}

int VerifyCommand::report()
{
    const DecodeReport decoded = DecodeReport::of(m_player, m_options.file, &m_surface);
    if (!m_hasFailed && decoded.counts.pictures == 0)
        fail(QStringLiteral("%1: no picture came out of it").arg(m_options.file));
    else if (!m_hasFailed && m_check.read() == 0)
        fail(QStringLiteral("%1: shows no test pattern").arg(m_options.file));
    if (m_check.read() == 0)
        return Failure;
    bool isPrinted;
    if (m_options.json) {
        QJsonObject json = toJson(decoded);
        addTo(&json, m_check);
        isPrinted = printJson(QJsonDocument(json), QJsonDocument::Compact);
    } else {
        isPrinted = printLine(toText(decoded)) && printLine(toText(m_check));
    }
    const bool isRight = m_check.isFlawless() && decoded.lost == 0 && !m_player.hasTrouble();
    return isRight && isPrinted && !m_hasFailed ? Success : Failure;
}

} // namespace Tool
