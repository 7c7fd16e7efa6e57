// SPDX-License-Identifier: GPL-3.0-or-later
#include "standins/ChatRequestCheck.h"

#include "standins/ApiFault.h"

#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>
#include <cmath>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

[[noreturn]] void refuse(const QString& path, const QString& reason) {
    throw ApiFault(400, u"Invalid value for '"_s + path + u"': "_s + reason, path);
}

/// An object of the request and its path; failures name the full path of the field.
class Fields {
public:
    Fields(const QJsonValue& value, QString path, const QStringList& known)
        : m_object(value.toObject()), m_path(std::move(path)) {
        if (!value.isObject()) {
            refuse(m_path, u"expected an object."_s);
        }
        for (const QString& name : m_object.keys()) {
            if (!known.contains(name)) {
                throw ApiFault(400, u"Unknown parameter: '"_s + pathOf(name) + u"'."_s, pathOf(name));
            }
        }
    }

    QString pathOf(const QString& name) const { return m_path.isEmpty() ? name : m_path + u'.' + name; }
    bool has(const QString& name) const { return m_object.contains(name); }

    QJsonValue value(const QString& name) const {
        if (!has(name)) {
            throw ApiFault(400, u"Missing required parameter: '"_s + pathOf(name) + u"'."_s, pathOf(name));
        }
        return m_object.value(name);
    }

    QString text(const QString& name) const {
        if (!value(name).isString()) {
            refuse(pathOf(name), u"expected a string."_s);
        }
        return value(name).toString();
    }

    void check(const QString& name, const QStringList& allowed) const {
        if (!allowed.contains(text(name))) {
            refuse(pathOf(name), u"supported values are: "_s + allowed.join(u", "));
        }
    }

    QJsonArray list(const QString& name) const {
        if (!value(name).isArray()) {
            refuse(pathOf(name), u"expected an array."_s);
        }
        return value(name).toArray();
    }

    QJsonArray list(const QString& name, qsizetype size) const {
        if (list(name).size() != size) {
            refuse(pathOf(name), u"expected an array of %1 elements."_s.arg(size));
        }
        return list(name);
    }

private:
    QJsonObject m_object;
    QString m_path;
};

QString checkTextBlock(const QJsonValue& value, const QString& path) {
    const Fields block(value, path, {u"type"_s, u"text"_s});
    block.check(u"type"_s, {u"text"_s});
    return block.text(u"text"_s);
}

void checkJpegUrl(const QString& url, const QString& path) {
    const QString prefix = u"data:image/jpeg;base64,"_s;
    const QByteArray base64 = url.mid(prefix.size()).toLatin1();
    const QByteArray jpeg = QByteArray::fromBase64(base64);
    // The decoder skips what it does not know.
    if (!url.startsWith(prefix) || jpeg.toBase64() != base64) {
        refuse(path, u"expected a base64-encoded data URL of an image."_s);
    }
    if (QImage::fromData(jpeg, "JPEG").isNull()) {
        refuse(path, u"you uploaded an unsupported image."_s);
    }
}

QString checkSystemMessage(const QJsonValue& value) {
    const QString path = u"messages[0]"_s;
    const Fields message(value, path, {u"role"_s, u"content"_s});
    message.check(u"role"_s, {u"system"_s});
    return checkTextBlock(message.list(u"content"_s, 1).at(0), path + u".content[0]"_s);
}

void checkImageBlock(const QJsonValue& value, const QString& path, const QStringList& details) {
    const Fields block(value, path, {u"type"_s, u"image_url"_s});
    block.check(u"type"_s, {u"image_url"_s});
    const Fields image(block.value(u"image_url"_s), block.pathOf(u"image_url"_s), {u"url"_s, u"detail"_s});
    checkJpegUrl(image.text(u"url"_s), image.pathOf(u"url"_s));
    if (image.has(u"detail"_s)) {
        image.check(u"detail"_s, details);
    }
}

CheckedImage checkHeading(const QString& text, qsizetype number, const QString& path) {
    const QString start = u"\n\n--- IMAGE "_s + QString::number(number) + u": "_s;
    const QString end = u" ---\n"_s;
    const qsizetype lineEnd = text.indexOf(u'\n', start.size()) + 1;
    const qsizetype nameEnd = lineEnd - end.size();
    if (!text.startsWith(start) || nameEnd < start.size() || text.sliced(nameEnd, end.size()) != end) {
        refuse(path, u"expected the heading of image %1."_s.arg(number));
    }
    return {.fileName = text.sliced(start.size(), nameEnd - start.size()), .context = text.sliced(lineEnd)};
}

void checkFormOfAnswer(const QString& text, const QString& path) {
    const QString expected = uR"(
Return a JSON array with one caption per image. Format:
[
  {"image": 1, "caption": "first caption here"},
  {"image": 2, "caption": "second caption here"},
  ...
]
Each caption should be exactly one line as specified in the instructions above.)"_s;
    if (text != expected) {
        refuse(path, u"expected the form of the answer."_s);
    }
}

void checkBatch(const QJsonArray& content, CheckedChat* chat) {
    const QString path = u"messages[1].content["_s;
    if (chat->system != u"You are a sports caption writer. Return captions in the requested JSON format.") {
        refuse(u"messages[0].content[0].text"_s, u"expected the task of a batch."_s);
    }
    const qsizetype last = content.size() - 1;
    for (qsizetype index = 1; index < last; index += 2) {
        const QString heading = path + QString::number(index) + u']';
        chat->batch.append(checkHeading(checkTextBlock(content.at(index), heading), index / 2 + 1, heading));
        checkImageBlock(content.at(index + 1), path + QString::number(index + 1) + u']', {u"low"_s});
    }
    const QString closing = path + QString::number(last) + u']';
    checkFormOfAnswer(checkTextBlock(content.at(last), closing), closing);
}

void checkUserMessage(const QJsonValue& value, CheckedChat* chat) {
    constexpr qsizetype ofOneImage = 2;
    constexpr qsizetype ofSmallestBatch = 6;
    const QString path = u"messages[1]"_s;
    const Fields message(value, path, {u"role"_s, u"content"_s});
    message.check(u"role"_s, {u"user"_s});
    const QJsonArray content = message.list(u"content"_s);
    const bool isBatch = content.size() >= ofSmallestBatch && content.size() % 2 == 0;
    if (!isBatch && content.size() != ofOneImage) {
        refuse(message.pathOf(u"content"_s), u"expected one image or a batch."_s);
    }
    chat->prompt = checkTextBlock(content.at(0), path + u".content[0]"_s);
    if (isBatch) {
        checkBatch(content, chat);
    } else {
        checkImageBlock(content.at(1), path + u".content[1]"_s, {u"low"_s, u"high"_s, u"auto"_s});
    }
}

} // namespace

CheckedChat checkChatRequest(const QByteArray& body) {
    const QJsonDocument document = QJsonDocument::fromJson(body);
    if (!document.isObject()) {
        throw ApiFault(400, u"We could not parse the JSON body of your request."_s);
    }
    const QString temperature = u"temperature"_s;
    const QString limit = u"max_tokens"_s;
    const Fields fields(document.object(), {}, {u"model"_s, u"messages"_s, temperature, limit});
    // A value that is not a number is out of range too.
    if (fields.has(temperature) && std::abs(fields.value(temperature).toDouble(-1) - 1) > 1) {
        refuse(temperature, u"expected a number between 0 and 2."_s);
    }
    if (fields.has(limit) && fields.value(limit).toInteger() < 1) {
        refuse(limit, u"expected an integer above 0."_s);
    }
    const QJsonArray messages = fields.list(u"messages"_s, 2);
    CheckedChat chat{.model = fields.text(u"model"_s),
                     .system = checkSystemMessage(messages.at(0)),
                     .prompt = {},
                     .batch = {}};
    checkUserMessage(messages.at(1), &chat);
    if (!chat.batch.isEmpty()) {
        fields.value(limit); // without one, the answer may be cut off in the middle of the list
    }
    return chat;
}

} // namespace ostrelle
