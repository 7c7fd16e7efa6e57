// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DefaultsChanges.h"

#include "platform/TaggedJson.h"

#include <algorithm>

namespace ostrelle {

namespace {

QJsonValue taggedSum(const QJsonValue& tagged, const QVariant& amount) {
    return taggedValue(addedTo(plainValue(tagged), amount));
}

void addAll(QVariantMap& amounts, const QVariantMap& more) {
    for (auto amount = more.begin(); amount != more.end(); ++amount) {
        amounts.insert(amount.key(), addedTo(amounts.value(amount.key()), *amount));
    }
}

void addAll(QJsonObject& values, const QVariantMap& amounts) {
    for (auto amount = amounts.begin(); amount != amounts.end(); ++amount) {
        values.insert(amount.key(), taggedSum(values.value(amount.key()), *amount));
    }
}

/// Amounts of another period start from zero.
void addAll(QJsonObject& values, const PeriodAmounts& added) {
    const QJsonValue period = taggedValue(added.period);
    if (values.value(added.periodKey) != period) {
        for (auto amount = added.amounts.begin(); amount != added.amounts.end(); ++amount) {
            values.remove(amount.key());
        }
        values.insert(added.periodKey, period);
    }
    addAll(values, added.amounts);
}

} // namespace

DefaultsChanges::DefaultsChanges(std::initializer_list<std::pair<QString, QJsonValue>> values) {
    for (const auto& [key, tagged] : values) {
        set(key, tagged);
    }
}

void DefaultsChanges::set(const QString& key, const QJsonValue& tagged) {
    m_values.insert(key, tagged);
    m_amounts.remove(key);
    for (PeriodAmounts& period : m_periods) {
        period.amounts.remove(key);
    }
}

void DefaultsChanges::add(const QString& key, const QVariant& amount) {
    if (m_values.contains(key)) {
        m_values.insert(key, taggedSum(m_values.value(key), amount));
    } else {
        addAll(m_amounts, {{key, amount}});
    }
}

void DefaultsChanges::add(const PeriodAmounts& amounts) {
    PeriodAmounts& known = m_periods[amounts.periodKey];
    if (known.period == amounts.period) {
        addAll(known.amounts, amounts.amounts);
    } else {
        known = amounts;
    }
}

void DefaultsChanges::append(const DefaultsChanges& later) {
    for (auto value = later.m_values.begin(); value != later.m_values.end(); ++value) {
        set(value.key(), value.value());
    }
    for (auto amount = later.m_amounts.begin(); amount != later.m_amounts.end(); ++amount) {
        add(amount.key(), *amount);
    }
    for (const PeriodAmounts& period : later.m_periods) {
        add(period);
    }
}

bool DefaultsChanges::concerns(const QString& key) const {
    return m_values.contains(key) || m_amounts.contains(key) ||
           std::any_of(m_periods.begin(), m_periods.end(), [&key](const PeriodAmounts& period) {
               return period.periodKey == key || period.amounts.contains(key);
           });
}

QJsonObject DefaultsChanges::appliedTo(QJsonObject values) const {
    for (auto change = m_values.begin(); change != m_values.end(); ++change) {
        if (change.value().isNull()) {
            values.remove(change.key());
        } else {
            values.insert(change.key(), change.value());
        }
    }
    addAll(values, m_amounts);
    for (const PeriodAmounts& period : m_periods) {
        addAll(values, period);
    }
    return values;
}

} // namespace ostrelle
