// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Error.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <optional>

namespace ostrelle {

/// A text that is not JSON, or not JSON of the expected form; the description says where.
class JsonError : public Error {
public:
    using Error::Error;
};

/// Parses a text that is a JSON list. Throws JsonError when it is not.
QJsonArray parseJsonList(const QByteArray& json);

/// Type-checked access to the fields of an untrusted JSON object. Throws JsonError with the path of the
/// field, such as "choices[0].index", when a required field is missing or null or any field has the wrong
/// type. An optional field that is null counts as absent.
class JsonFields {
public:
    /// Parses a text that is a JSON object. Throws JsonError when it is not.
    static JsonFields parse(const QByteArray& json);
    /// The object at the path.
    JsonFields(const QJsonValue& value, QString path);

    QString text(const QString& name) const;
    std::optional<QString> optionalText(const QString& name) const;
    /// A number without a fraction, in the range of the type.
    qint64 integer(const QString& name) const;
    QJsonArray list(const QString& name) const;
    JsonFields object(const QString& name) const;
    std::optional<JsonFields> optionalObject(const QString& name) const;

    QStringList names() const { return m_object.keys(); }
    /// The unchecked field, undefined when missing.
    QJsonValue value(const QString& name) const { return m_object.value(name); }
    QString pathOf(const QString& name) const;

private:
    QJsonValue required(const QString& name) const;
    bool isAbsent(const QString& name) const;

    QJsonObject m_object;
    QString m_path;
};

} // namespace ostrelle
