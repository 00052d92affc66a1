// SPDX-License-Identifier: BSD-3-Clause
#include "reports.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QXmlStreamWriter>

#include <algorithm>

namespace Compliance {
namespace {

constexpr int NameWidth = 18; // of the longest check

// Without the control characters that XML cannot hold and a terminal should not get.
QString plain(const QString &text)
{
    QString result;
    for (const QChar character : text)
        result += character.isPrint() || character.isSurrogate() ? character : QChar('?');
    return result;
}

void writeCase(QXmlStreamWriter *xml, const Result &result)
{
    xml->writeStartElement(QStringLiteral("testcase"));
    xml->writeAttribute(QStringLiteral("classname"), result.check);
    xml->writeAttribute(QStringLiteral("name"), result.device.isEmpty() ? QStringLiteral("platform")
                                                                        : plain(result.device));
    xml->writeAttribute(QStringLiteral("time"), QString::number(result.seconds, 'f', 3));
    const QString reason = plain(result.outcome.reason);
    switch (result.outcome.kind) {
    case Outcome::Kind::Pass:
        break;
    case Outcome::Kind::Fail:
        xml->writeEmptyElement(QStringLiteral("failure"));
        xml->writeAttribute(QStringLiteral("message"), reason);
        break;
    case Outcome::Kind::Skip:
        xml->writeEmptyElement(QStringLiteral("skipped"));
        xml->writeAttribute(QStringLiteral("message"), reason);
        break;
    }
    xml->writeEndElement();
}

} // namespace

int count(const std::vector<Result> &results, Outcome::Kind kind)
{
    return int(std::count_if(results.begin(), results.end(),
                             [kind](const Result &result) { return result.outcome.kind == kind; }));
}

QString toText(const Result &result)
{
    QString line = kindName(result.outcome.kind) + QStringLiteral("  ") +
                   result.check.leftJustified(NameWidth);
    if (!result.device.isEmpty())
        line += QStringLiteral("  ") + plain(result.device);
    if (!result.outcome.reason.isEmpty())
        line += QStringLiteral("  ") + plain(result.outcome.reason);
    return line;
}

QString summary(const std::vector<Result> &results)
{
    return QStringLiteral("%1 checks: %2 passed, %3 failed, %4 skipped")
            .arg(results.size())
            .arg(count(results, Outcome::Kind::Pass))
            .arg(count(results, Outcome::Kind::Fail))
            .arg(count(results, Outcome::Kind::Skip));
}

QJsonDocument toJson(const std::vector<Result> &results)
{
    QJsonArray checks;
    for (const Result &result : results) {
        checks.append(QJsonObject { { QStringLiteral("check"), result.check },
                                    { QStringLiteral("purpose"), result.purpose },
                                    { QStringLiteral("device"), result.device },
                                    { QStringLiteral("result"), kindName(result.outcome.kind) },
                                    { QStringLiteral("reason"), result.outcome.reason },
                                    { QStringLiteral("seconds"), result.seconds } });
    }
    return QJsonDocument(QJsonObject {
            { QStringLiteral("checks"), checks },
            { QStringLiteral("passed"), count(results, Outcome::Kind::Pass) },
            { QStringLiteral("failed"), count(results, Outcome::Kind::Fail) },
            { QStringLiteral("skipped"), count(results, Outcome::Kind::Skip) },
    });
}

QByteArray toJUnit(const std::vector<Result> &results)
{
    QByteArray bytes;
    QXmlStreamWriter xml(&bytes);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("testsuite"));
    xml.writeAttribute(QStringLiteral("name"), QStringLiteral("ocelle compliance"));
    xml.writeAttribute(QStringLiteral("tests"), QString::number(results.size()));
    xml.writeAttribute(QStringLiteral("failures"),
                       QString::number(count(results, Outcome::Kind::Fail)));
    xml.writeAttribute(QStringLiteral("skipped"),
                       QString::number(count(results, Outcome::Kind::Skip)));
    double seconds = 0;
    for (const Result &result : results)
        seconds += result.seconds;
    xml.writeAttribute(QStringLiteral("time"), QString::number(seconds, 'f', 3));
    for (const Result &result : results)
        writeCase(&xml, result);
    xml.writeEndElement();
    xml.writeEndDocument();
    return bytes;
}

} // namespace Compliance
