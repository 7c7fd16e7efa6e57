// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/JsonFields.h"

#include <QJsonDocument>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

[[noreturn]] void throwNot(const QString& type, const QString& path) {
    const QString subject = path.isEmpty() ? u"This"_s : u"The field \""_s + path + u'"';
    throw JsonError(subject + u" is not "_s + type + u'.');
}

QString checkedText(const QJsonValue& value, const QString& path) {
    if (!value.isString()) {
        throwNot(u"a text"_s, path);
    }
    return value.toString();
}

QJsonDocument parsed(const QByteArray& json) {
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError) {
        throw JsonError(u"This is not JSON: "_s + error.errorString() + u" at byte "_s +
                        QString::number(error.offset) + u'.');
    }
    return document;
}

} // namespace

QJsonArray parseJsonList(const QByteArray& json) {
    const QJsonDocument document = parsed(json);
    if (!document.isArray()) {
        throwNot(u"a list"_s, {});
    }
    return document.array();
}

JsonFields JsonFields::parse(const QByteArray& json) {
    const QJsonDocument document = parsed(json);
    return JsonFields(document.isObject() ? QJsonValue(document.object()) : QJsonValue(), {});
}

JsonFields::JsonFields(const QJsonValue& value, QString path)
    : m_object(value.toObject()), m_path(std::move(path)) {
    if (!value.isObject()) {
        throwNot(u"an object"_s, m_path);
    }
}

QString JsonFields::text(const QString& name) const {
    return checkedText(required(name), pathOf(name));
}

std::optional<QString> JsonFields::optionalText(const QString& name) const {
    return isAbsent(name) ? std::nullopt : std::optional(checkedText(value(name), pathOf(name)));
}

qint64 JsonFields::integer(const QString& name) const {
    const QJsonValue number = required(name);
    // Only a value that is not such a number returns whatever default it is given.
    if (number.toInteger(0) != number.toInteger(1)) {
        throwNot(u"an integer"_s, pathOf(name));
    }
    return number.toInteger();
}

QJsonArray JsonFields::list(const QString& name) const {
    const QJsonValue found = required(name);
    if (!found.isArray()) {
        throwNot(u"a list"_s, pathOf(name));
    }
    return found.toArray();
}

JsonFields JsonFields::object(const QString& name) const {
    return JsonFields(required(name), pathOf(name));
}

std::optional<JsonFields> JsonFields::optionalObject(const QString& name) const {
    return isAbsent(name) ? std::nullopt : std::optional(object(name));
}

QString JsonFields::pathOf(const QString& name) const {
    return m_path.isEmpty() ? name : m_path + u'.' + name;
}

QJsonValue JsonFields::required(const QString& name) const {
    if (isAbsent(name)) {
        throw JsonError(u"The field \""_s + pathOf(name) + u"\" is missing."_s);
    }
    return value(name);
}

bool JsonFields::isAbsent(const QString& name) const {
    const QJsonValue found = value(name);
    return found.isUndefined() || found.isNull();
}

} // namespace ostrelle
