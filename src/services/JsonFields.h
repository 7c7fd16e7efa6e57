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

/// The list that the text consists of. Throws JsonError when it does not.
QJsonArray parseJsonList(const QByteArray& json);

/// The fields of a foreign JSON object, read with their types checked. A required field that is missing or
/// null, and any field of another type, throws JsonError with the field's path, such as
/// "choices[0].index". An optional field that is null is absent.
class JsonFields {
public:
    /// The object that the text consists of. Throws JsonError when it does not.
    static JsonFields parse(const QByteArray& json);
    /// The object that stands at the path.
    JsonFields(const QJsonValue& value, QString path);

    QString text(const QString& name) const;
    std::optional<QString> optionalText(const QString& name) const;
    /// A number without a fraction, in the range of the type.
    qint64 integer(const QString& name) const;
    QJsonArray list(const QString& name) const;
    JsonFields object(const QString& name) const;
    std::optional<JsonFields> optionalObject(const QString& name) const;

    QStringList names() const { return m_object.keys(); }
    /// The field as it stands, undefined when missing.
    QJsonValue value(const QString& name) const { return m_object.value(name); }
    QString pathOf(const QString& name) const;

private:
    QJsonValue required(const QString& name) const;
    bool isAbsent(const QString& name) const;

    QJsonObject m_object;
    QString m_path;
};

} // namespace ostrelle
