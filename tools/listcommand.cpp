// SPDX-License-Identifier: BSD-3-Clause
#include "listcommand.h"

#include "cameralist.h"
#include "codeclist.h"
#include "commandline.h"
#include "console.h"

#include <QCamera>
#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>

namespace Tool {
namespace {

struct OfferedSize
{
    QSize size;
    QList<double> rates; // ascending
};

struct Offer
{
    QStringList formats;
    QList<OfferedSize> sizes; // by their number of pixels
};

Offer summary(const QList<QCameraViewfinderSettings> &settings)
{
    Offer offer;
    for (const QCameraViewfinderSettings &one : settings) {
        const QString format = formatName(one.pixelFormat());
        if (!offer.formats.contains(format))
            offer.formats.append(format);
        const auto same = [&one](const OfferedSize &other) {
            return other.size == one.resolution();
        };
        auto size = std::find_if(offer.sizes.begin(), offer.sizes.end(), same);
        if (size == offer.sizes.end())
            size = offer.sizes.insert(offer.sizes.end(), { one.resolution(), {} });
        if (!size->rates.contains(one.maximumFrameRate()))
            size->rates.append(one.maximumFrameRate());
    }
    for (OfferedSize &size : offer.sizes)
        std::sort(size.rates.begin(), size.rates.end());
    std::sort(offer.sizes.begin(), offer.sizes.end(), [](const auto &one, const auto &other) {
        return one.size.width() * one.size.height() < other.size.width() * other.size.height();
    });
    return offer;
}

QString positionName(QCamera::Position position)
{
    switch (position) {
    case QCamera::FrontFace:
        return QStringLiteral("front");
    case QCamera::BackFace:
        return QStringLiteral("back");
    case QCamera::UnspecifiedPosition:
        break;
    }
    return QStringLiteral("unspecified");
}

QJsonObject toJson(const QCameraInfo &camera, const Offer &offer, const QString &error)
{
    QJsonArray sizes;
    for (const OfferedSize &size : offer.sizes) {
        QJsonArray rates;
        for (const double rate : size.rates)
            rates.append(rate);
        sizes.append(QJsonObject { { QStringLiteral("width"), size.size.width() },
                                   { QStringLiteral("height"), size.size.height() },
                                   { QStringLiteral("rates"), rates } });
    }
    QJsonObject object {
        { QStringLiteral("id"), camera.deviceName() },
        { QStringLiteral("name"), camera.description() },
        { QStringLiteral("position"), positionName(camera.position()) },
        { QStringLiteral("orientation"), camera.orientation() % 360 },
        { QStringLiteral("default"), camera == QCameraInfo::defaultCamera() },
        { QStringLiteral("formats"), QJsonArray::fromStringList(offer.formats) },
        { QStringLiteral("sizes"), sizes },
    };
    if (!error.isEmpty())
        object.insert(QStringLiteral("error"), error);
    return object;
}

QString toText(const QCameraInfo &camera, const Offer &offer)
{
    const QString isDefault =
            camera == QCameraInfo::defaultCamera() ? QStringLiteral(", default") : QString();
    QStringList lines {
        QStringLiteral("%1  %2").arg(camera.deviceName(), camera.description()),
        QStringLiteral("    position %1, orientation %2%3")
                .arg(positionName(camera.position()))
                .arg(camera.orientation() % 360)
                .arg(isDefault),
    };
    if (!offer.formats.isEmpty())
        lines.append(QStringLiteral("    formats %1").arg(offer.formats.join(QLatin1String(", "))));
    for (const OfferedSize &size : offer.sizes) {
        QStringList rates;
        for (const double rate : size.rates)
            rates.append(QString::number(rate));
        const QString pixels =
                QStringLiteral("%1x%2").arg(size.size.width()).arg(size.size.height());
        lines.append(QStringLiteral("    %1  at %2 fps")
                             .arg(pixels, -9)
                             .arg(rates.join(QLatin1String(", "))));
    }
    return lines.join(QLatin1Char('\n'));
}

QJsonArray toJson(const QList<CodecDescription> &codecs)
{
    QJsonArray array;
    for (const CodecDescription &codec : codecs) {
        array.append(QJsonObject {
                { QStringLiteral("id"), codec.id },
                { QStringLiteral("type"), codec.type },
                { QStringLiteral("hardware"), codec.isHardwareAccelerated },
                { QStringLiteral("max_instances"), codec.maxInstances },
        });
    }
    return array;
}

QString toText(const CodecDescription &codec, const QString &kind)
{
    return QStringLiteral("%1  %2 for %3\n    %4, at most %5 at once")
            .arg(codec.id, kind, codec.type.isEmpty() ? QStringLiteral("?") : codec.type,
                 codec.isHardwareAccelerated ? QStringLiteral("hardware")
                                             : QStringLiteral("software"),
                 QString::number(codec.maxInstances));
}

/*! Opens each camera in turn; false where one does not. */
bool listCameras(bool json, QJsonArray *array)
{
    const QList<QCameraInfo> cameras = availableCameras();
    if (cameras.isEmpty())
        printNote(QStringLiteral("There are no cameras."));
    bool isGood = true;
    for (const QCameraInfo &camera : cameras) {
        QString error;
        const Offer offer = summary(offeredSettings(camera, &error));
        if (!error.isEmpty()) {
            isGood = false;
            printError(QStringLiteral("camera %1: %2").arg(camera.deviceName(), error));
        }
        if (json)
            array->append(toJson(camera, offer, error));
        else
            isGood = printLine(toText(camera, offer)) && isGood;
    }
    return isGood;
}

} // namespace

int listDevices(bool json)
{
    QJsonArray cameras;
    bool isGood = listCameras(json, &cameras);
    QString error;
    const QList<CodecDescription> encoders = availableCodecs(true, &error);
    const QList<CodecDescription> decoders = availableCodecs(false, &error);
    if (!error.isEmpty()) {
        printError(error);
        isGood = false;
    }
    if (json) {
        const QJsonObject all { { QStringLiteral("cameras"), cameras },
                                { QStringLiteral("encoders"), toJson(encoders) },
                                { QStringLiteral("decoders"), toJson(decoders) } };
        return printJson(QJsonDocument(all), QJsonDocument::Indented) && isGood ? Success : Failure;
    }
    for (const CodecDescription &codec : encoders)
        isGood = printLine(toText(codec, QStringLiteral("encoder"))) && isGood;
    for (const CodecDescription &codec : decoders)
        isGood = printLine(toText(codec, QStringLiteral("decoder"))) && isGood;
    return isGood ? Success : Failure;
}

} // namespace Tool
