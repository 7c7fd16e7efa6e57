// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/ReportPrinter.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <optional>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QString outcomeWord(ImageReport::Outcome outcome) {
    switch (outcome) {
    case ImageReport::Outcome::captioned:
        return u"captioned"_s;
    case ImageReport::Outcome::skipped:
        return u"skipped"_s;
    case ImageReport::Outcome::failed:
        break;
    }
    return u"failed"_s;
}

QString detail(const QString& label, const QString& text) {
    return u"\n  %1%2"_s.arg(label.leftJustified(11), text);
}

/// Captions and names come from others, so control characters that a terminal would obey become a mark.
QString printable(QString text) {
    for (QChar& character : text) {
        if (character.category() == QChar::Other_Control && character != u'\n') {
            character = QChar::ReplacementCharacter;
        }
    }
    return text;
}

QJsonValue textOrNull(const std::optional<QString>& text) {
    return text ? QJsonValue(*text) : QJsonValue(QJsonValue::Null);
}

} // namespace

QString reportText(const ImageReport& report) {
    QString text = u"%1  %2"_s.arg(outcomeWord(report.outcome).leftJustified(9), report.file);
    if (!report.reason.isEmpty()) {
        text += detail(u"why"_s, report.reason);
    }
    for (const QString& warning : report.warnings) {
        text += detail(u"warning"_s, warning);
    }
    if (report.captionAfter) {
        text += detail(u"before"_s, report.captionBefore && !report.captionBefore->isEmpty()
                                        ? *report.captionBefore
                                        : u"(no caption)"_s);
        text += detail(u"after"_s, *report.captionAfter);
    }
    if (report.previewPath) {
        text += detail(u"rendition"_s, *report.previewPath);
    }
    if (report.cost) {
        text += detail(u"cost"_s, u"$%1"_s.arg(*report.cost, 0, 'f', 6));
    }
    return printable(text);
}

QString reportLine(const ImageReport& report) {
    const QString words = report.captionAfter ? *report.captionAfter : report.reason;
    QString line = u"%1  %2  %3"_s.arg(outcomeWord(report.outcome).leftJustified(9),
                                       QFileInfo(report.file).fileName(), words);
    return printable(line.replace(u'\n', u' '));
}

QString reportJson(const ImageReport& report) {
    const QJsonObject line{
        {u"file"_s, report.file},
        {u"result"_s, outcomeWord(report.outcome)},
        {u"warnings"_s, QJsonArray::fromStringList(report.warnings)},
        {u"reason"_s, report.reason.isEmpty() ? QJsonValue(QJsonValue::Null) : QJsonValue(report.reason)},
        {u"before"_s, textOrNull(report.captionBefore)},
        {u"after"_s, textOrNull(report.captionAfter)},
        {u"rendition"_s, textOrNull(report.previewPath)},
        {u"cost"_s, report.cost ? QJsonValue(*report.cost) : QJsonValue(QJsonValue::Null)},
    };
    return QString::fromUtf8(QJsonDocument(line).toJson(QJsonDocument::Compact));
}

} // namespace ostrelle
