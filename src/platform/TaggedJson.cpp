// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/TaggedJson.h"

#include <QByteArray>
#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>
#include <QVariantList>
#include <cmath>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr int deepestList = 16; // lists within lists

QJsonValue encode(const QVariant& value, int depth);
QVariant decode(const QJsonValue& tagged, int depth);

QJsonValue encodeReal(double number) {
    // JSON has no infinities and no NaN, and Qt writes negative zero as 0.
    if (!std::isfinite(number)) {
        return QString::number(number);
    }
    return number == 0.0 && std::signbit(number) ? QJsonValue(u"-0"_s) : QJsonValue(number);
}

QVariant decodeReal(const QJsonValue& stored) {
    bool isNumber = stored.isDouble();
    const double number = stored.isString() ? stored.toString().toDouble(&isNumber) : stored.toDouble();
    return isNumber ? QVariant(number) : QVariant();
}

QVariant decodeInteger(const QJsonValue& stored) {
    const QVariant number = stored.toVariant();
    return number.typeId() == QMetaType::LongLong ? number : QVariant();
}

QVariant decodeData(const QJsonValue& stored) {
    const auto data =
        QByteArray::fromBase64Encoding(stored.toString().toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    return stored.isString() && data ? QVariant(*data) : QVariant();
}

QString dateText(const QDateTime& moment) {
    return moment.toUTC().toString(Qt::ISODateWithMs);
}

QVariant decodeDate(const QJsonValue& stored) {
    const QDateTime moment = QDateTime::fromString(stored.toString(), Qt::ISODateWithMs);
    return moment.isValid() && dateText(moment) == stored.toString() ? QVariant(moment.toUTC()) : QVariant();
}

QJsonValue encodeList(const QVariantList& list, int depth) {
    QJsonArray elements;
    for (const QVariant& element : list) {
        const QJsonValue tagged = depth < deepestList ? encode(element, depth + 1) : QJsonValue::Undefined;
        if (tagged.isUndefined()) {
            return tagged;
        }
        elements.append(tagged);
    }
    return QJsonObject{{u"list"_s, elements}};
}

QVariant decodeList(const QJsonValue& stored, int depth) {
    QVariantList list;
    const QJsonArray elements = stored.toArray();
    for (const QJsonValue tagged : elements) {
        list.append(depth < deepestList ? decode(tagged, depth + 1) : QVariant());
        if (!list.last().isValid()) {
            return {};
        }
    }
    return stored.isArray() ? QVariant(list) : QVariant();
}

/// The value under the name of its type, or undefined when it cannot be stored.
QJsonValue encode(const QVariant& value, int depth) {
    switch (value.typeId()) {
    case QMetaType::Bool:
        return QJsonObject{{u"bool"_s, value.toBool()}};
    case QMetaType::LongLong:
        return QJsonObject{{u"integer"_s, value.toLongLong()}};
    case QMetaType::Double:
        return QJsonObject{{u"real"_s, encodeReal(value.toDouble())}};
    case QMetaType::QString:
        return QJsonObject{{u"text"_s, value.toString()}};
    case QMetaType::QByteArray:
        return QJsonObject{{u"data"_s, QString::fromLatin1(value.toByteArray().toBase64())}};
    case QMetaType::QDateTime: {
        const QString text = dateText(value.toDateTime());
        return text.isEmpty() ? QJsonValue(QJsonValue::Undefined) : QJsonObject{{u"date"_s, text}};
    }
    case QMetaType::QVariantList:
        return encodeList(value.toList(), depth);
    default:
        return QJsonValue::Undefined;
    }
}

/// The reverse; an invalid variant for anything encode() would not produce.
QVariant decode(const QJsonValue& tagged, int depth) {
    const QJsonObject object = tagged.toObject();
    if (object.size() != 1) {
        return {};
    }
    const QString type = object.constBegin().key();
    const QJsonValue stored = object.constBegin().value();
    if (type == "bool"_L1) {
        return stored.isBool() ? QVariant(stored.toBool()) : QVariant();
    }
    if (type == "integer"_L1) {
        return decodeInteger(stored);
    }
    if (type == "real"_L1) {
        return decodeReal(stored);
    }
    if (type == "text"_L1) {
        return stored.isString() ? QVariant(stored.toString()) : QVariant();
    }
    if (type == "data"_L1) {
        return decodeData(stored);
    }
    if (type == "date"_L1) {
        return decodeDate(stored);
    }
    return type == "list"_L1 ? decodeList(stored, depth) : QVariant();
}

} // namespace

QJsonValue taggedValue(const QVariant& value) {
    return encode(value, 0);
}

QVariant plainValue(const QJsonValue& tagged) {
    return decode(tagged, 0);
}

} // namespace ostrelle
