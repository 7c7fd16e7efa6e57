// SPDX-License-Identifier: GPL-3.0-or-later
#include "standins/StandInCompletion.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QStringList>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const qint64 charactersPerToken = 4;
const qint64 tokensOfImage = 2833; // a small one

/// The lines "- Name: value" below "Context:". The rules that follow have lines of the same form.
QMap<QString, QString> contextFacts(const QString& prompt) {
    QMap<QString, QString> facts;
    const QStringList lines = prompt.split(u'\n');
    for (qsizetype i = lines.indexOf(u"Context:"_s) + 1; i > 0 && i < lines.size(); ++i) {
        const qsizetype colon = lines[i].indexOf(u": ");
        if (!lines[i].startsWith(u"- ") || colon < 0) {
            break;
        }
        facts.insert(lines[i].mid(2, colon - 2), lines[i].mid(colon + 2).simplified());
    }
    return facts;
}

QString existingCaption(const QString& prompt) {
    const QString name = u"Existing caption (may be minimal): "_s;
    const qsizetype start = prompt.lastIndexOf(name);
    const QString caption = start < 0 ? QString() : prompt.mid(start + name.size()).simplified();
    return caption == u"No caption" ? QString() : caption;
}

QString sentence(const QString& words) {
    return words.isEmpty() || words.endsWith(u'.') ? words : words + u'.';
}

QString phrase(const QString& preposition, const QString& words) {
    return words.isEmpty() ? QString() : preposition + words;
}

QString json(const QJsonArray& list) {
    return QString::fromUtf8(QJsonDocument(list).toJson()).trimmed();
}

qint64 textTokens(const QString& text) {
    return (text.size() + charactersPerToken - 1) / charactersPerToken;
}

} // namespace

QString standInCaption(const QString& prompt, const QString& fileName) {
    const QMap<QString, QString> context = contextFacts(prompt);
    const QString date = context.value(u"DateText"_s, context.value(u"Date"_s));
    const QString scene = context.value(u"Sport"_s, u"Sports"_s) +
                          phrase(u" during "_s, context.value(u"Event"_s)) +
                          phrase(u" at "_s, context.value(u"Venue"_s)) +
                          phrase(u" in "_s, context.value(u"Place"_s)) + phrase(u" on "_s, date);
    QStringList sentences{sentence(scene), sentence(existingCaption(prompt)),
                          sentence(phrase(u"Picture "_s, fileName)), context.value(u"Rights"_s),
                          u"(caption by the stand-in model, which sees no picture)"_s};
    sentences.removeAll(QString());
    return sentences.join(u' ');
}

QString standInBatchText(const QList<CheckedImage>& batch, BatchForm form) {
    QJsonArray entries;
    for (const CheckedImage& image : batch) {
        entries.append(QJsonObject{{u"image"_s, entries.size() + 1},
                                   {u"caption"_s, standInCaption(image.context, image.fileName)}});
    }
    const auto renumberLast = [&entries](qsizetype number) {
        QJsonObject last = entries.last().toObject();
        last.insert(u"image"_s, number);
        entries.replace(entries.size() - 1, last);
    };
    switch (form) {
    case BatchForm::list:
        break;
    case BatchForm::fencedList:
        return u"```json\n"_s + json(entries) + u"\n```"_s;
    case BatchForm::listInProse:
        return u"Here are the captions:\n\n"_s + json(entries) + u"\n\nLet me know what to change."_s;
    case BatchForm::entryMissing:
        entries.removeLast();
        break;
    case BatchForm::entryTooMany:
        entries.append(entries.last());
        break;
    case BatchForm::numberZero:
        renumberLast(0);
        break;
    case BatchForm::numberNegative:
        renumberLast(-1);
        break;
    case BatchForm::numberAbove:
        renumberLast(entries.size() + 1);
        break;
    }
    return json(entries);
}

QByteArray standInCompletion(const CheckedChat& chat, qsizetype number, qint64 createdSeconds,
                             BatchForm form) {
    const bool isBatch = !chat.batch.isEmpty();
    const QString caption = isBatch ? standInBatchText(chat.batch, form) : standInCaption(chat.prompt);
    qint64 prompt = textTokens(chat.system) + textTokens(chat.prompt) + (isBatch ? 0 : tokensOfImage);
    for (const CheckedImage& image : chat.batch) {
        prompt += textTokens(image.context) + tokensOfImage;
    }
    const qint64 completion = textTokens(caption);
    const QJsonObject message{{u"role"_s, u"assistant"_s}, {u"content"_s, caption}};
    const QJsonObject choice{{u"index"_s, 0}, {u"message"_s, message}, {u"finish_reason"_s, u"stop"_s}};
    const QJsonObject usage{{u"prompt_tokens"_s, prompt},
                            {u"completion_tokens"_s, completion},
                            {u"total_tokens"_s, prompt + completion}};
    const QJsonObject reply{{u"id"_s, u"chatcmpl-standin-"_s + QString::number(number)},
                            {u"object"_s, u"chat.completion"_s},
                            {u"created"_s, createdSeconds},
                            {u"model"_s, chat.model},
                            {u"choices"_s, QJsonArray{choice}},
                            {u"usage"_s, usage}};
    return QJsonDocument(reply).toJson(QJsonDocument::Compact);
}

} // namespace ostrelle
