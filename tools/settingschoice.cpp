// SPDX-License-Identifier: BSD-3-Clause
#include "settingschoice.h"

#include "cameralist.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace Tool {
namespace {

constexpr int Named = 2;             // of the nearest ones
constexpr double RateMargin = 0.005; // frames per second

bool sameRate(double one, double other)
{
    return std::abs(one - other) < RateMargin;
}

QString toText(QSize size)
{
    return QStringLiteral("%1x%2").arg(size.width()).arg(size.height());
}

int distance(QSize one, QSize other)
{
    return std::abs(one.width() - other.width()) + std::abs(one.height() - other.height());
}

QString nearestText(const QStringList &nearest)
{
    return (nearest.size() == 1 ? QStringLiteral("the nearest is ")
                                : QStringLiteral("the nearest are ")) +
           joined(nearest);
}

QString sizeNotOffered(const QList<QCameraViewfinderSettings> &offered, QSize wanted)
{
    QList<QSize> sizes;
    for (const QCameraViewfinderSettings &one : offered) {
        if (!sizes.contains(one.resolution()))
            sizes.append(one.resolution());
    }
    std::stable_sort(sizes.begin(), sizes.end(), [wanted](QSize one, QSize other) {
        return distance(one, wanted) < distance(other, wanted);
    });
    QStringList nearest;
    for (const QSize &size : sizes.mid(0, Named))
        nearest.append(toText(size));
    return QStringLiteral("size %1 is not offered; %2").arg(toText(wanted), nearestText(nearest));
}

QString rateNotOffered(const QList<QCameraViewfinderSettings> &offered, std::optional<QSize> size,
                       double wanted)
{
    QList<double> rates;
    for (const QCameraViewfinderSettings &one : offered) {
        if (!rates.contains(one.maximumFrameRate()))
            rates.append(one.maximumFrameRate());
    }
    std::stable_sort(rates.begin(), rates.end(), [wanted](double one, double other) {
        return std::abs(one - wanted) < std::abs(other - wanted);
    });
    QStringList nearest;
    for (const double rate : rates.mid(0, Named))
        nearest.append(QString::number(rate));
    const QString at = size ? QStringLiteral(" at ") + toText(*size) : QString();
    return QStringLiteral("%1 fps is not offered%2; %3 fps")
            .arg(QString::number(wanted), at, nearestText(nearest));
}

} // namespace

std::optional<QCameraViewfinderSettings>
chooseSettings(const QList<QCameraViewfinderSettings> &offered, std::optional<QSize> size,
               std::optional<double> rate, QString *error)
{
    QList<QCameraViewfinderSettings> fitting;
    for (const QCameraViewfinderSettings &one : offered) {
        if (!size || one.resolution() == *size)
            fitting.append(one);
    }
    if (fitting.isEmpty()) {
        *error = offered.isEmpty() ? QStringLiteral("no pictures are offered")
                                   : sizeNotOffered(offered, size.value_or(QSize()));
        return std::nullopt;
    }
    for (const QCameraViewfinderSettings &one : fitting) {
        if (!rate || sameRate(one.maximumFrameRate(), *rate))
            return one;
    }
    *error = rateNotOffered(fitting, size, *rate);
    return std::nullopt;
}

} // namespace Tool
