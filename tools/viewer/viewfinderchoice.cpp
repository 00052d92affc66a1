// SPDX-License-Identifier: BSD-3-Clause
#include "viewfinderchoice.h"

#include "settingschoice.h"

#include <algorithm>

namespace Viewer {

QList<QSize> ViewfinderChoice::offeredSizes() const
{
    QList<QSize> sizes;
    for (const QCameraViewfinderSettings &one : m_offered) {
        if (!sizes.contains(one.resolution()))
            sizes.append(one.resolution());
    }
    std::sort(sizes.begin(), sizes.end(), [](QSize one, QSize other) {
        return one.width() * one.height() < other.width() * other.height();
    });
    return sizes;
}

QList<qreal> ViewfinderChoice::offeredRates() const
{
    QList<qreal> rates;
    for (const QCameraViewfinderSettings &one : m_offered) {
        if (one.resolution() == size() && !rates.contains(one.maximumFrameRate()))
            rates.append(one.maximumFrameRate());
    }
    std::sort(rates.begin(), rates.end());
    return rates;
}

QStringList ViewfinderChoice::sizes() const
{
    QStringList texts;
    for (const QSize &size : offeredSizes())
        texts.append(QStringLiteral("%1 × %2").arg(size.width()).arg(size.height()));
    return texts;
}

QStringList ViewfinderChoice::rates() const
{
    QStringList texts;
    for (const qreal rate : offeredRates())
        texts.append(QStringLiteral("%1 fps").arg(rate, 0, 'g', 4));
    return texts;
}

int ViewfinderChoice::sizeIndex() const
{
    return offeredSizes().indexOf(size());
}

int ViewfinderChoice::rateIndex() const
{
    return offeredRates().indexOf(rate());
}

void ViewfinderChoice::wish(const QSize &size, qreal rate)
{
    m_wishedSize = size;
    m_wishedRate = rate;
}

void ViewfinderChoice::load(QObject *camera)
{
    m_camera = camera ? camera->property("mediaObject").value<QCamera *>() : nullptr;
    m_offered =
            m_camera ? m_camera->supportedViewfinderSettings() : QList<QCameraViewfinderSettings>();
    QString error;
    const auto wished = Tool::chooseSettings(
            m_offered, m_wishedSize.isEmpty() ? std::nullopt : std::make_optional(m_wishedSize),
            m_wishedRate > 0 ? std::make_optional(m_wishedRate) : std::nullopt, &error);
    wish(QSize(), 0);
    if (!wished)
        emit failed(error);
    apply(wished.value_or(m_offered.value(0)));
}

void ViewfinderChoice::clear()
{
    m_camera = nullptr;
    m_offered.clear();
    m_chosen = QCameraViewfinderSettings();
    emit changed();
}

void ViewfinderChoice::chooseSize(int index)
{
    const QSize wanted = offeredSizes().value(index);
    const auto has = [wanted](const QCameraViewfinderSettings &one) {
        return one.resolution() == wanted;
    };
    const auto hasBoth = [this, &has](const QCameraViewfinderSettings &one) {
        return has(one) && qFuzzyCompare(one.maximumFrameRate(), rate());
    };
    auto found = std::find_if(m_offered.cbegin(), m_offered.cend(), hasBoth);
    if (found == m_offered.cend())
        found = std::find_if(m_offered.cbegin(), m_offered.cend(), has);
    if (found != m_offered.cend())
        apply(*found);
}

void ViewfinderChoice::chooseRate(int index)
{
    const QList<qreal> rates = offeredRates();
    if (index < 0 || index >= rates.size())
        return;
    for (const QCameraViewfinderSettings &one : qAsConst(m_offered)) {
        if (one.resolution() == size() && qFuzzyCompare(one.maximumFrameRate(), rates.at(index))) {
            apply(one);
            return;
        }
    }
}

void ViewfinderChoice::apply(const QCameraViewfinderSettings &settings)
{
    m_chosen = settings;
    if (m_camera && !settings.isNull())
        m_camera->setViewfinderSettings(settings);
    emit changed();
}

} // namespace Viewer
