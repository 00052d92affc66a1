// SPDX-License-Identifier: BSD-3-Clause
#include "previewreport.h"

namespace Tool {
namespace {

QString milliseconds(double microseconds)
{
    return QString::number(microseconds / 1000, 'f', 2);
}

double rounded(double microseconds) // to milliseconds with three places
{
    return qRound64(microseconds) / 1000.0;
}

constexpr double Lowered = 0.9; // of the negotiated rate: less than this is no accident

QString deviceText(const PreviewReport &report)
{
    const PreviewReport::Device &device = *report.device;
    QString text = QStringLiteral("; device: %1, asked for %2 fps, negotiated %3, measured %4")
                           .arg(device.format, QString::number(report.settings.maximumFrameRate()),
                                QString::number(device.negotiated, 'f', 2),
                                QString::number(device.measured, 'f', 2));
    const bool isLowered = device.measured > 0 && device.measured < Lowered * device.negotiated;
    if (isLowered && !device.loweringControl.isEmpty())
        text += QStringLiteral(", lowered by its automatic exposure (control \"%1\")")
                        .arg(device.loweringControl);
    return text;
}

} // namespace

QString toText(const PreviewReport &report)
{
    QString counts;
    if (report.delivery) {
        counts = QStringLiteral("delivered %1, presented %2, dropped %3, missing %4, duplicated %5")
                         .arg(report.delivery->delivered)
                         .arg(report.presented)
                         .arg(report.delivery->dropped)
                         .arg(report.delivery->missing)
                         .arg(report.delivery->duplicated);
    } else {
        counts = QStringLiteral("presented %1").arg(report.presented);
    }
    QString text = QStringLiteral("%1 %2x%3 %4 at %5 fps: %6; %7 pictures/s")
                           .arg(report.camera, QString::number(report.size.width()),
                                QString::number(report.size.height()), report.format,
                                QString::number(report.settings.maximumFrameRate()), counts,
                                QString::number(report.rate, 'f', 2));
    if (report.latencies.count() > 0) {
        text += QStringLiteral("; latency mean %1 ms, median %2 ms, 99% %3 ms, max %4 ms")
                        .arg(milliseconds(report.latencies.mean()),
                             milliseconds(report.latencies.quantile(0.5)),
                             milliseconds(report.latencies.quantile(0.99)),
                             milliseconds(double(report.latencies.maximum())));
    }
    return report.device ? text + deviceText(report) : text;
}

QJsonObject toJson(const PreviewReport &report)
{
    QJsonObject json {
        { QStringLiteral("camera"), report.camera },
        { QStringLiteral("width"), report.size.width() },
        { QStringLiteral("height"), report.size.height() },
        { QStringLiteral("format"), report.format },
        { QStringLiteral("fps"), report.settings.maximumFrameRate() },
        { QStringLiteral("mirrored"), report.mirrored },
        { QStringLiteral("presented"), report.presented },
        { QStringLiteral("rate"), report.rate },
    };
    if (report.delivery) {
        json.insert(QStringLiteral("delivered"), qint64(report.delivery->delivered));
        json.insert(QStringLiteral("dropped"), qint64(report.delivery->dropped));
        json.insert(QStringLiteral("missing"), qint64(report.delivery->missing));
        json.insert(QStringLiteral("duplicated"), qint64(report.delivery->duplicated));
    }
    if (report.latencies.count() > 0) {
        json.insert(QStringLiteral("latency_ms"),
                    QJsonObject {
                            { QStringLiteral("mean"), rounded(report.latencies.mean()) },
                            { QStringLiteral("median"), rounded(report.latencies.quantile(0.5)) },
                            { QStringLiteral("p99"), rounded(report.latencies.quantile(0.99)) },
                            { QStringLiteral("max"), rounded(double(report.latencies.maximum())) },
                    });
    }
    if (report.device) {
        json.insert(QStringLiteral("device"),
                    QJsonObject {
                            { QStringLiteral("format"), report.device->format },
                            { QStringLiteral("negotiated_fps"), report.device->negotiated },
                            { QStringLiteral("measured_fps"), report.device->measured },
                            { QStringLiteral("lowering_control"), report.device->loweringControl },
                    });
    }
    if (!report.snapshot.isEmpty())
        json.insert(QStringLiteral("snapshot"), report.snapshot);
    return json;
}

} // namespace Tool
