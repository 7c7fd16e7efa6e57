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

/// Changes to a table of taggedValue()s, which are made on top of whatever it holds by then. Of several
/// changes of one key the order counts.
class DefaultsChanges {
public:
    DefaultsChanges() = default;
    DefaultsChanges(std::initializer_list<std::pair<QString, QJsonValue>> values);

    /// A tagged value; null removes the key.
    void set(const QString& key, const QJsonValue& tagged);
    /// A qint64 or double.
    void add(const QString& key, const QVariant& amount);
    void add(const PeriodAmounts& amounts);
    /// The other's changes come after these.
    void append(const DefaultsChanges& later);

    bool isEmpty() const { return m_values.isEmpty() && m_amounts.isEmpty() && m_periods.isEmpty(); }
    bool concerns(const QString& key) const;
    QJsonObject appliedTo(QJsonObject values) const;

private:
    QJsonObject m_values;
    QVariantMap m_amounts; // none of a key in m_values
    QMap<QString, PeriodAmounts> m_periods;
};

} // namespace ostrelle
