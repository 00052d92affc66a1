// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "commandline.h"
#include "livecheck.h"
#include "recording.h"
#include "recordreport.h"
#include "recordsurface.h"

#include <QCamera>
#include <QCameraInfo>
#include <QObject>
#include <QTimer>

#include <memory>
#include <optional>

class QPVRawVideoSourceControl;

namespace Tool {

/*!
 * The settings of a recording as the command line has them, but for those of the pictures.
 *
 * Errors: nothing, and \a error says what cannot be done.
 */
std::optional<RecordingSettings> recordingSettings(const EncodingOptions &options, QString *error);

/*! Says that the pictures of \a file do not all have one size. */
QString sizeChange(const QString &file, QSize before, QSize after);

/*!
 * Records a camera's pictures to a file.
 *
 * Threads: the application thread.
 * Errors:  explained on standard error; the exit code tells wrong usage from failure. What was
 *          recorded before a failure stays.
 */
class RecordCommand : public QObject
{
    Q_OBJECT
public:
    explicit RecordCommand(const RecordOptions &options, QObject *parent = nullptr);
    ~RecordCommand() override;

    /*! Runs until it has recorded for as long as it should, is interrupted or fails. */
    int run();

private:
    bool prepare();
    void openCamera();
    void onCameraStatusChanged(QCamera::Status status);
    void onCameraError(QCamera::Error error);
    void startRecording();
    void startCamera();
    void onPicture(const QVideoFrame &frame);
    void onTick();
    void finish(int exitCode, const QString &error = QString());
    void closeCamera();
    int close();
    bool printReport();
    bool isChecked();
    qint64 dropped() const;
    QString gone() const; // what to say where the camera is no longer listed

    const RecordOptions m_options;
    RecordSurface m_surface;            // before the camera, which lets go of it
    std::unique_ptr<LiveCheck> m_check; // where it is asked for; the camera lets go of it, too
    std::unique_ptr<QCamera> m_camera;
    QCameraInfo m_info;
    QPVRawVideoSourceControl *m_pictures = nullptr; // the camera's
    std::unique_ptr<Recording> m_recording;
    RecordReport m_report;
    int m_exitCode = 0;
    bool m_isLoaded = false;
    bool m_isFinished = false;

    QTimer m_tick;
    int m_ticks = 0;
    int m_idleTicks = 0;
    qint64 m_taken = 0; // pictures
    qint64 m_takenAtTick = 0;
    qint64 m_bytesAtTick = 0;
    qint64 m_firstTime = 0; // microseconds, of the first picture
};

} // namespace Tool
