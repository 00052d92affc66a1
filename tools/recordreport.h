// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "recording.h"

#include <QJsonObject>
#include <QString>

#include <optional>

namespace Tool {

/*! What a recording came to. */
struct RecordReport
{
    QString source; // camera or file
    RecordingSettings settings;
    FileSink::Written written;
    qint64 dropped = 0;            // pictures that came but were not recorded
    std::optional<qint64> missing; // lost before they came, where that is known
    std::optional<double> speed;   // pictures per second, where they do not come in their time
    bool isComplete = false;       // the file has its name

    QString file() const; // where it is
    QSize size() const;   // of the recorded pictures
    double seconds() const;
    double bitRate() const; // bits per second
};

QString toText(const RecordReport &report);
QJsonObject toJson(const RecordReport &report);

/*! How far a recording has come: "12 s: 360 pictures, 981 kbit/s, 0 dropped". */
QString progressText(double seconds, qint64 pictures, double bitRate, qint64 dropped);

} // namespace Tool
