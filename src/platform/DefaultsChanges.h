// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DefaultsStore.h"

#include <QJsonObject>
#include <QMap>
#include <QString>
#include <QVariantMap>
#include <initializer_list>
#include <utility>

namespace ostrelle {

/// Changes to a table of taggedValue()s, applied to whatever it holds at that time. Several changes to one
/// key apply in order.
class DefaultsChanges {
public:
    DefaultsChanges() = default;
    DefaultsChanges(std::initializer_list<std::pair<QString, QJsonValue>> values);

    /// A tagged value; null removes the key.
    void set(const QString& key, const QJsonValue& tagged);
    /// A qint64 or double.
    void add(const QString& key, const QVariant& amount);
    void add(const PeriodAmounts& amounts);
    /// Adds the other's changes after these.
    void append(const DefaultsChanges& later);

    bool isEmpty() const { return m_values.isEmpty() && m_amounts.isEmpty() && m_periods.isEmpty(); }
    bool concerns(const QString& key) const;
    QJsonObject appliedTo(QJsonObject values) const;

private:
    QJsonObject m_values;
    QVariantMap m_amounts; // no keys that m_values has
    QMap<QString, PeriodAmounts> m_periods;
};

} // namespace ostrelle
