// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "latencyhistogram.h"

#include <QCameraViewfinderSettings>
#include <QJsonObject>
#include <QString>

#include <optional>

namespace Tool {

/*! What a preview came to. */
struct PreviewReport
{
    /*! What only the stand-in's video output can count. */
    struct Delivery
    {
        quint64 delivered = 0;  // pictures
        quint64 dropped = 0;    // delivered, but replaced by newer ones
        quint64 missing = 0;    // lost before they were delivered
        quint64 duplicated = 0; // delivered twice
    };

    /*! What the stand-in's V4L2 cameras tell of the device. */
    struct Device
    {
        QString format;          // the device's own
        double negotiated = 0;   // pictures per second
        double measured = 0;     // the same, 0 while there are too few
        QString loweringControl; // takes longer exposures than the rate allows; empty if none
    };

    QString camera;
    QCameraViewfinderSettings settings; // that were chosen
    QSize size;                         // of the pictures
    QString format;
    bool mirrored = false;
    qint64 presented = 0; // pictures
    std::optional<Delivery> delivery;
    std::optional<Device> device;
    double rate = 0; // measured, pictures per second
    LatencyHistogram latencies;
    QString snapshot; // file it was saved to
};

QString toText(const PreviewReport &report);
QJsonObject toJson(const PreviewReport &report);

} // namespace Tool
