// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/ReportPrinter.h"

#include "cli/TerminalText.h"
#include "core/Text.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <optional>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QString outcomeWord(OutcomeKind kind) {
    if (kind == OutcomeKind::captioned) {
        return u"captioned"_s;
    }
    return isDone(kind) ? u"skipped"_s : u"failed"_s;
}

QString detail(const QString& label, const QString& text) {
    return u"\n  %1%2"_s.arg(label.leftJustified(11), text);
}

QJsonValue textOrNull(const std::optional<QString>& text) {
    return text ? QJsonValue(*text) : QJsonValue(QJsonValue::Null);
}

} // namespace

QString reportText(const ImageOutcome& image) {
    QString text = u"%1  %2"_s.arg(outcomeWord(image.kind).leftJustified(9), image.file);
    if (!image.reason.isEmpty()) {
        text += detail(u"why"_s, image.reason);
    }
    for (const QString& warning : image.warnings) {
        text += detail(u"warning"_s, warning);
    }
    if (image.captionAfter) {
        text +=
            detail(u"before"_s, image.captionBefore && !image.captionBefore->isEmpty() ? *image.captionBefore
                                                                                       : u"(no caption)"_s);
        text += detail(u"after"_s, *image.captionAfter);
    }
    if (image.previewPath) {
        text += detail(u"rendition"_s, *image.previewPath);
    }
    if (image.cost) {
        text += detail(u"cost"_s, u"$%1"_s.arg(*image.cost, 0, 'f', 6));
    }
    return printable(text);
}

QString reportLine(const ImageOutcome& image) {
    const QString words = image.captionAfter ? *image.captionAfter : image.reason;
    QString line = u"%1  %2  %3"_s.arg(outcomeWord(image.kind).leftJustified(9),
                                       QFileInfo(image.file).fileName(), words);
    return printable(line.replace(u'\n', u' '));
}

QString reportJson(const ImageOutcome& image) {
    const QJsonObject line{
        {u"file"_s, image.file},
        {u"result"_s, outcomeWord(image.kind)},
        {u"warnings"_s, QJsonArray::fromStringList(image.warnings)},
        {u"reason"_s, image.reason.isEmpty() ? QJsonValue(QJsonValue::Null) : QJsonValue(image.reason)},
        {u"before"_s, textOrNull(image.captionBefore)},
        {u"after"_s, textOrNull(image.captionAfter)},
        {u"rendition"_s, textOrNull(image.previewPath)},
        {u"cost"_s, image.cost ? QJsonValue(*image.cost) : QJsonValue(QJsonValue::Null)},
    };
    return QString::fromUtf8(QJsonDocument(line).toJson(QJsonDocument::Compact));
}

QString fetchLine(const FetchedFile& file) {
    const bool isFetched = file.failure.isEmpty();
    const QString line =
        u"%1  %2  %3"_s.arg((isFetched ? u"fetched"_s : u"failed"_s).leftJustified(9),
                            QFileInfo(file.path).fileName(), isFetched ? dataSize(file.bytes) : file.failure);
    return printable(QString(line).replace(u'\n', u' '));
}

QString fetchJson(const FetchedFile& file) {
    const bool isFetched = file.failure.isEmpty();
    const QJsonObject line{
        {u"file"_s, file.path},
        {u"result"_s, isFetched ? u"fetched"_s : u"failed"_s},
        {u"bytes"_s, file.bytes},
        {u"reason"_s, isFetched ? QJsonValue(QJsonValue::Null) : QJsonValue(file.failure)},
    };
    return QString::fromUtf8(QJsonDocument(line).toJson(QJsonDocument::Compact));
}

} // namespace ostrelle
