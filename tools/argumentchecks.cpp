// SPDX-License-Identifier: BSD-3-Clause
#include "argumentchecks.h"

#include "cameralist.h"
#include "frameimage.h"
#include "videocodec.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <limits>

namespace Tool {
namespace {

constexpr int MaxSide = 16384;    // pixels
constexpr double MaxRate = 10000; // pictures per second
constexpr int QuarterTurn = 90;   // degrees
constexpr int FullTurn = 360;
constexpr int MaxTurn = 100 * FullTurn;

} // namespace

QSize sizeFrom(const std::string &text)
{
    static const QRegularExpression form(QStringLiteral("^([0-9]{1,5})[xX]([0-9]{1,5})$"));
    const QRegularExpressionMatch match = form.match(QString::fromStdString(text));
    const QSize size(match.captured(1).toInt(), match.captured(2).toInt());
    const bool sensible = size.width() > 0 && size.height() > 0 && size.width() <= MaxSide &&
                          size.height() <= MaxSide;
    return sensible ? size : QSize();
}

std::string sizeProblem(const std::string &text)
{
    return sizeFrom(text).isValid()
                   ? std::string()
                   : "\"" + text + "\" is not a size; write width x height in pixels, like 640x480";
}

std::string rateProblem(const std::string &text)
{
    bool isNumber = false;
    const double rate = QString::fromStdString(text).toDouble(&isNumber);
    return isNumber && rate > 0 && rate <= MaxRate
                   ? std::string()
                   : "\"" + text + "\" is not a number of pictures per second";
}

qint64 framesFrom(const std::string &text)
{
    return qMax<qint64>(0, QString::fromStdString(text).toLongLong()); // 0 where it is no number
}

std::string framesProblem(const std::string &text)
{
    return framesFrom(text) > 0 ? std::string() : "\"" + text + "\" is not a number of pictures";
}

// Told before a long run, not after it.
std::string snapshotProblem(const std::string &text)
{
    const QString path = QFile::decodeName(text.c_str());
    const QFileInfo file(path);
    if (!canSaveImage(path))
        return "\"" + text + "\" does not end in a known image format, like .png";
    if (!file.dir().exists())
        return "the folder of \"" + text + "\" does not exist";
    if (file.isDir())
        return "\"" + text + "\" is a folder";
    if (file.exists() && !file.isFile()) // a device, which a new file would take the place of
        return "\"" + text + "\" is not an ordinary file";
    return {};
}

std::string nameProblem(const std::string &text)
{
    return text.empty() ? "\"\" is not the name of a file" : std::string();
}

std::string folderProblem(const std::string &text)
{
    if (text.empty())
        return nameProblem(text);
    return QFileInfo(QFile::decodeName(text.c_str())).dir().exists()
                   ? std::string()
                   : "the folder of \"" + text + "\" does not exist";
}

/*! Bits per second, "800000", "800k" or "1.5M"; 0 for anything else. */
int bitRateFrom(const std::string &text)
{
    static const QRegularExpression form(
            QStringLiteral("^([0-9]{1,12}(?:\\.[0-9]{1,6})?)([kM]?)$"));
    const QRegularExpressionMatch match = form.match(QString::fromStdString(text));
    const QString unit = match.captured(2);
    const double factor = unit == QLatin1String("k") ? 1e3 : unit == QLatin1String("M") ? 1e6 : 1;
    const double rate = match.captured(1).toDouble() * factor;
    return rate >= 1 && rate <= std::numeric_limits<int>::max() ? qRound(rate) : 0;
}

std::string bitRateProblem(const std::string &text)
{
    return bitRateFrom(text) > 0
                   ? std::string()
                   : "\"" + text + "\" is not a number of bits per second, like 800000 or 800k";
}

std::string secondsProblem(const std::string &text)
{
    bool isNumber = false;
    const double seconds = QString::fromStdString(text).toDouble(&isNumber);
    return isNumber && seconds > 0 && seconds < 1e9 ? std::string()
                                                    : "\"" + text + "\" is not a number of seconds";
}

std::optional<int> rotationFrom(const std::string &text)
{
    bool isNumber = false;
    const int degrees = QString::fromStdString(text).toInt(&isNumber);
    if (!isNumber || degrees % QuarterTurn != 0 || degrees > MaxTurn || degrees < -MaxTurn)
        return std::nullopt;
    return (degrees % FullTurn + FullTurn) % FullTurn;
}

std::string rotationProblem(const std::string &text)
{
    return rotationFrom(text)
                   ? std::string()
                   : "\"" + text + "\" is not a rotation; there are 0, 90, 180 and 270 degrees";
}

std::string codecProblem(const std::string &text)
{
    return codecNamed(QString::fromStdString(text))
                   ? std::string()
                   : "\"" + text + "\" is not a codec; there are " +
                             joined(codecNames()).toStdString();
}

} // namespace Tool
