// SPDX-License-Identifier: BSD-3-Clause
#include "player.h"

#include <QFileInfo>
#include <QVideoFrame>

namespace Viewer {

Player::Player(QObject *parent)
    : QObject(parent)
{
    connect(&m_surface, &ForwardingSurface::pictureShown, this, &Player::onPicture);
}

Player::~Player() = default;

void Player::setVideoSurface(QAbstractVideoSurface *surface)
{
    if (surface == m_surface.target())
        return;
    m_surface.setTarget(surface);
    emit videoSurfaceChanged();
}

void Player::play(const QString &file)
{
    stop();
    m_hasFailed = false;
    m_position = 0;
    m_duration = 0;
    m_details.clear();
    m_hasPicture = m_hasPicture && file == m_file; // stays while the same is played again
    m_file = file;
    auto player = std::make_unique<Tool::FilePlayer>(&m_surface);
    QString error;
    bool isUsage = false;
    if (player->open(file, std::nullopt, &error, &isUsage)) {
        const Tool::StreamReader::Properties &video = player->stream().properties();
        m_duration = double(video.duration) / 1e6;
        m_details = QStringLiteral("%1, %2 × %3")
                            .arg(Tool::codecName(video.codec).toUpper())
                            .arg(video.size.width())
                            .arg(video.size.height());
        player->setRealTime(true);
        const auto tell = [this](const QString &text) {
            m_hasFailed = true;
            emit failed(text);
        };
        connect(player.get(), &Tool::FilePlayer::failed, this, tell);
        connect(player.get(), &Tool::FilePlayer::noticed, this, tell);
        connect(player.get(), &Tool::FilePlayer::ended, this, &Player::onEnded,
                Qt::QueuedConnection);
        m_player = std::move(player);
    }
    m_hasPicture = m_hasPicture && m_player;
    emit positionChanged();
    emit playingChanged();
    if (m_player)
        m_player->start();
    else
        emit failed(error);
}

void Player::stop()
{
    if (!m_player)
        return;
    m_player->disconnect(this);
    m_player.reset();
    emit playingChanged();
    emit positionChanged();
}

void Player::onPicture(const QVideoFrame &frame)
{
    if (!m_player)
        return;
    m_hasPicture = true;
    m_position = double(frame.startTime()) / 1e6;
    m_player->onPicture(frame);
    emit positionChanged();
}

void Player::onEnded()
{
    if (!m_player)
        return;
    const bool isEmpty = m_player->counts().pictures == 0;
    stop();
    if (isEmpty && !m_hasFailed)
        emit failed(QStringLiteral("no picture came out of %1").arg(QFileInfo(m_file).fileName()));
    else if (!m_hasFailed)
        emit finished();
}

} // namespace Viewer
