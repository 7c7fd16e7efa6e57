// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/ChatRequestCheck.h"

#include "support/ApiFault.h"

#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

[[noreturn]] void refuseType(const QString& path, const QString& expected) {
    throw ApiFault(400, u"Invalid type for '"_s + path + u"': expected "_s + expected + u'.', path,
                   u"invalid_type"_s);
}

[[noreturn]] void refuseValue(const QString& path, const QString& reason) {
    throw ApiFault(400, u"Invalid value for '"_s + path + u"': "_s + reason, path, u"invalid_value"_s);
}

/// An object of the request and where it stands; what is asked of it is refused by its full path.
class Fields {
public:
    Fields(const QJsonValue& value, QString path, const QStringList& known)
        : m_object(value.toObject()), m_path(std::move(path)) {
        if (!value.isObject()) {
            refuseType(m_path, u"an object"_s);
        }
        for (const QString& name : m_object.keys()) {
            if (!known.contains(name)) {
                throw ApiFault(400, u"Unknown parameter: '"_s + pathOf(name) + u"'."_s, pathOf(name),
                               u"unknown_parameter"_s);
            }
        }
    }

    QString pathOf(const QString& name) const { return m_path.isEmpty() ? name : m_path + u'.' + name; }
    bool has(const QString& name) const { return m_object.contains(name); }

    QJsonValue value(const QString& name) const {
        if (!has(name)) {
            throw ApiFault(400, u"Missing required parameter: '"_s + pathOf(name) + u"'."_s, pathOf(name),
                           u"missing_required_parameter"_s);
        }
        return m_object.value(name);
    }

    QString text(const QString& name) const {
        if (!value(name).isString()) {
            refuseType(pathOf(name), u"a string"_s);
        }
        return value(name).toString();
    }

    QString text(const QString& name, const QStringList& allowed) const {
        const QString found = text(name);
        if (!allowed.contains(found)) {
            refuseValue(pathOf(name), u"Supported values are: "_s + allowed.join(u", "));
        }
        return found;
    }

    QJsonArray list(const QString& name, qsizetype size) const {
        if (!value(name).isArray()) {
            refuseType(pathOf(name), u"an array"_s);
        }
        const QJsonArray found = value(name).toArray();
        if (found.size() != size) {
            refuseValue(pathOf(name), QString::number(size) + u" elements are expected."_s);
        }
        return found;
    }

private:
    QJsonObject m_object;
    QString m_path;
};

QString checkTextBlock(const QJsonValue& value, const QString& path) {
    const Fields block(value, path, {u"type"_s, u"text"_s});
    block.text(u"type"_s, {u"text"_s});
    return block.text(u"text"_s);
}

QSize checkJpegUrl(const QString& url, const QString& path) {
    const QString prefix = u"data:image/jpeg;base64,"_s;
    if (!url.startsWith(prefix)) {
        refuseValue(path, u"Expected a base64-encoded data URL of an image."_s);
    }
    const QByteArray base64 = url.mid(prefix.size()).toLatin1();
    const auto decoded = QByteArray::fromBase64Encoding(base64, QByteArray::AbortOnBase64DecodingErrors);
    // The decoder lets missing padding and stray low bits pass.
    if (!decoded || decoded.decoded.toBase64() != base64) {
        throw ApiFault(400, u"Invalid base64 image_url."_s, path, u"invalid_base64"_s);
    }
    const QImage image = QImage::fromData(decoded.decoded, "JPEG");
    if (image.isNull()) {
        throw ApiFault(400, u"You uploaded an unsupported image."_s, path, u"invalid_image_format"_s);
    }
    return image.size();
}

void checkSystemMessage(const QJsonValue& value, CheckedChat& chat) {
    const QString path = u"messages[0]"_s;
    const Fields message(value, path, {u"role"_s, u"content"_s});
    message.text(u"role"_s, {u"system"_s});
    chat.system = checkTextBlock(message.list(u"content"_s, 1).at(0), path + u".content[0]"_s);
}

void checkUserMessage(const QJsonValue& value, CheckedChat& chat) {
    const QString path = u"messages[1]"_s;
    const Fields message(value, path, {u"role"_s, u"content"_s});
    message.text(u"role"_s, {u"user"_s});
    const QJsonArray content = message.list(u"content"_s, 2);
    chat.prompt = checkTextBlock(content.at(0), path + u".content[0]"_s);

    const Fields block(content.at(1), path + u".content[1]"_s, {u"type"_s, u"image_url"_s});
    block.text(u"type"_s, {u"image_url"_s});
    const Fields image(block.value(u"image_url"_s), block.pathOf(u"image_url"_s), {u"url"_s, u"detail"_s});
    chat.imageSize = checkJpegUrl(image.text(u"url"_s), image.pathOf(u"url"_s));
    chat.detail =
        image.has(u"detail"_s) ? image.text(u"detail"_s, {u"low"_s, u"high"_s, u"auto"_s}) : u"auto"_s;
}

qint64 checkMaximumTokens(const QJsonValue& value) {
    const QString path = u"max_tokens"_s;
    if (value.toInteger(0) != value.toInteger(1)) {
        refuseType(path, u"an integer"_s);
    }
    if (value.toInteger() < 1) {
        throw ApiFault(400, u"Invalid 'max_tokens': integer below minimum value."_s, path,
                       u"integer_below_min_value"_s);
    }
    return value.toInteger();
}

void checkTemperature(const QJsonValue& value) {
    const QString path = u"temperature"_s;
    if (!value.isDouble()) {
        refuseType(path, u"a decimal"_s);
    }
    if (value.toDouble() < 0 || value.toDouble() > 2) {
        refuseValue(path, u"Expected a value between 0 and 2."_s);
    }
}

} // namespace

CheckedChat checkChatRequest(const QByteArray& body) {
    const QJsonDocument document = QJsonDocument::fromJson(body);
    if (!document.isObject()) {
        throw ApiFault(400, u"We could not parse the JSON body of your request."_s);
    }
    const Fields fields(document.object(), {},
                        {u"model"_s, u"messages"_s, u"temperature"_s, u"max_tokens"_s});
    CheckedChat chat;
    chat.model = fields.text(u"model"_s);
    if (chat.model.isEmpty()) {
        throw ApiFault(400, u"you must provide a model parameter"_s);
    }
    const QJsonArray messages = fields.list(u"messages"_s, 2);
    checkSystemMessage(messages.at(0), chat);
    checkUserMessage(messages.at(1), chat);
    if (fields.has(u"max_tokens"_s)) {
        chat.maximumTokens = checkMaximumTokens(fields.value(u"max_tokens"_s));
    }
    if (fields.has(u"temperature"_s)) {
        checkTemperature(fields.value(u"temperature"_s));
    }
    return chat;
}

} // namespace ostrelle
