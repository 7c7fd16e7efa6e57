// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/StandInCompletion.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QStringList>
#include <algorithm>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const qint64 charactersPerToken = 4;

QString label() {
    return u"(caption by the stand-in model, which sees no picture)"_s;
}

/// The lines "- Name: value" below "Context:". The rules that follow have lines of the same look.
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

QString facts(const QString& prompt) {
    const QMap<QString, QString> context = contextFacts(prompt);
    const auto phrase = [](const QString& preposition, const QString& value) {
        return value.isEmpty() ? QString() : preposition + value;
    };
    const QString date = context.value(u"DateText"_s, context.value(u"Date"_s));
    const QString scene = context.value(u"Sport"_s, u"Sports"_s) +
                          phrase(u" during "_s, context.value(u"Event"_s)) +
                          phrase(u" at "_s, context.value(u"Venue"_s)) +
                          phrase(u" in "_s, context.value(u"Place"_s)) + phrase(u" on "_s, date);
    QStringList sentences{sentence(scene), sentence(existingCaption(prompt)), context.value(u"Rights"_s)};
    sentences.removeAll(QString());
    return sentences.join(u' ');
}

/// As the prices of the service say: pictures cost a fixed number, and more for each tile of 512 pixels
/// when they are looked at closely.
qint64 imageTokens(const CheckedChat& chat) {
    const bool isMini = chat.model.startsWith(u"gpt-4o-mini");
    const qint64 tiles = ((chat.imageSize.width() + 511) / 512) * ((chat.imageSize.height() + 511) / 512);
    const qint64 closely = chat.detail == u"low" ? 0 : tiles * (isMini ? 5667 : 170);
    return (isMini ? 2833 : 85) + closely;
}

qint64 textTokens(const QString& text) {
    return (text.size() + charactersPerToken - 1) / charactersPerToken;
}

} // namespace

QString standInCaption(const QString& prompt) {
    return facts(prompt) + u' ' + label();
}

QByteArray standInCompletion(const CheckedChat& chat, qsizetype number, qint64 createdSeconds) {
    const QString whole = standInCaption(chat.prompt);
    const qint64 limit = std::min<qint64>(chat.maximumTokens.value_or(whole.size()), whole.size());
    const bool isCut = textTokens(whole) > limit;
    const qsizetype room = std::max<qsizetype>(0, limit * charactersPerToken - label().size() - 1);
    const QString caption = isCut ? facts(chat.prompt).left(room) + u' ' + label() : whole;

    const qint64 prompt = textTokens(chat.system) + textTokens(chat.prompt) + imageTokens(chat);
    const qint64 completion = textTokens(caption);
    const QJsonObject message{{u"role"_s, u"assistant"_s}, {u"content"_s, caption}};
    const QJsonObject choice{
        {u"index"_s, 0}, {u"message"_s, message}, {u"finish_reason"_s, isCut ? u"length"_s : u"stop"_s}};
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
