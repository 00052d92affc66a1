// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "rawpictures.h"
#include "recording.h"

#include <QObject>
#include <QPointer>
#include <QSize>
#include <QThread>
#include <QTimer>

#include <memory>

namespace Viewer {

/*!
 * Records a camera's pictures to a file in the user's videos folder.
 *
 * Threads: the application thread.
 * Units:   seconds, bytes, pictures, bits per second.
 * Errors:  failed() with a text; what was recorded until then is kept and told by finished().
 */
class Recorder : public QObject
{
    Q_OBJECT
    Q_PROPERTY(Viewer::RawPictures *source READ source WRITE setSource NOTIFY sourceChanged)
    Q_PROPERTY(QStringList codecs READ codecs CONSTANT)
    Q_PROPERTY(bool active READ isActive NOTIFY activeChanged) // until the file is complete
    Q_PROPERTY(qreal seconds READ seconds NOTIFY progressChanged)
    Q_PROPERTY(qreal bytes READ bytes NOTIFY progressChanged)
    Q_PROPERTY(int dropped READ dropped NOTIFY progressChanged)
    Q_PROPERTY(int waiting READ waiting NOTIFY progressChanged) // pictures inside the encoder
public:
    explicit Recorder(QObject *parent = nullptr);
    ~Recorder() override;

    RawPictures *source() const { return m_source; }
    /*! Before the first start(). */
    void setSource(RawPictures *source);
    /*! The names of those that there is an encoder for. */
    QStringList codecs() const { return m_codecs; }
    bool isActive() const { return bool(m_recording); }
    qreal seconds() const;
    qreal bytes() const;
    int dropped() const;
    int waiting() const;

    Q_INVOKABLE void start(const QString &codec, int bitRate, const QSize &size, qreal rate);
    Q_INVOKABLE void stop(); // finished() follows

signals:
    void sourceChanged();
    void activeChanged();
    void progressChanged();
    void finished(const QString &file); // which is complete
    void failed(const QString &error);

private:
    bool prepare(const QString &codec, Tool::RecordingSettings *settings, QString *error);
    void onStarted();
    void onPicture(const QVideoFrame &frame);
    void onEnded();
    void onClosed();
    void stopTaking();
    void remove();
    void fail(const QString &error);

    const QStringList m_codecs;
    QPointer<RawPictures> m_source; // QML deletes it first, where both go
    std::unique_ptr<Tool::Recording> m_recording;
    QString m_file;
    std::unique_ptr<QThread> m_closing; // completes the file: a disk may not answer for long
    bool m_isComplete = false;          // what came of that
    QString m_closeError;
    QTimer m_tick;
    qint64 m_lost = 0; // before they came here; once none is taken any more
    bool m_isTaking = false;
};

} // namespace Viewer
