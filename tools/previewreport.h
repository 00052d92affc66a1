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

    QString camera;
    QCameraViewfinderSettings settings; // that were chosen
    QSize size;                         // of the pictures
    QString format;
    bool mirrored = false;
    qint64 presented = 0; // pictures
    std::optional<Delivery> delivery;
    double rate = 0; // measured, pictures per second
    LatencyHistogram latencies;
    QString snapshot; // file it was saved to
};

QString toText(const PreviewReport &report);
QJsonObject toJson(const PreviewReport &report);

} // namespace Tool
