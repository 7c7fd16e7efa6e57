// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/BatchCaptionParsing.h"

#include "services/JsonFields.h"
#include "services/OpenAIError.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// In bytes. Thirty times a reply of 2000 tokens, the most a batch may cost.
constexpr qsizetype largestList = qsizetype{256} * 1024;

BatchResponseItem decodeItem(const JsonFields& fields) {
    BatchResponseItem item{.image = fields.integer(u"image"_s), .caption = fields.text(u"caption"_s)};
    if (item.caption.size() > longestCaption) {
        throw JsonError(u"The field \"%1\" is longer than %2 characters."_s.arg(fields.pathOf(u"caption"_s))
                            .arg(longestCaption));
    }
    return item;
}

} // namespace

QString jsonListIn(const QString& text) {
    const qsizetype first = text.indexOf(u'[');
    const qsizetype last = text.lastIndexOf(u']');
    return first >= 0 && first < last ? text.sliced(first, last + 1 - first) : text;
}

QList<BatchResponseItem> decodeBatchItems(const QByteArray& json) {
    if (json.size() > largestList) {
        throw JsonError(u"The list is larger than %1 bytes."_s.arg(largestList));
    }
    const QJsonArray elements = parseJsonList(json);
    QList<BatchResponseItem> items;
    for (qsizetype index = 0; index < elements.size(); ++index) {
        const QString path = u'[' + QString::number(index) + u']';
        items.append(decodeItem(JsonFields(elements.at(index), path)));
    }
    return items;
}

QList<BatchCaptionResult> captionsOfImages(const QList<BatchResponseItem>& items,
                                           const QStringList& fileNames) {
    QList<BatchCaptionResult> results;
    for (const BatchResponseItem& item : items) {
        if (item.image < 1 || item.image > fileNames.size()) {
            continue;
        }
        const qsizetype position = item.image - 1;
        results.append(
            {.position = position, .filename = fileNames[position], .caption = item.caption.trimmed()});
    }
    if (results.size() != fileNames.size()) {
        throw OpenAIError::decoding(
            u"Expected %1 captions, got %2"_s.arg(fileNames.size()).arg(results.size()));
    }
    return results;
}

} // namespace ostrelle
