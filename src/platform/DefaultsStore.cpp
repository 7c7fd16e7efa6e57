// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DefaultsStore.h"

#include <limits>

namespace ostrelle {

QVariant addedTo(const QVariant& value, const QVariant& amount) {
    if (value.metaType() != amount.metaType()) {
        return amount;
    }
    if (amount.metaType() == QMetaType::fromType<double>()) {
        return value.toDouble() + amount.toDouble();
    }
    qint64 sum = 0;
    const bool overflows = __builtin_add_overflow(value.toLongLong(), amount.toLongLong(), &sum);
    using Limits = std::numeric_limits<qint64>;
    return !overflows ? sum : amount.toLongLong() < 0 ? Limits::min() : Limits::max();
}

void DefaultsStore::addAll(const QVariantMap& amounts, const PeriodAmounts& ofPeriod) {
    QVariantMap sums;
    for (auto amount = amounts.begin(); amount != amounts.end(); ++amount) {
        sums.insert(amount.key(), addedTo(value(amount.key()), *amount));
    }
    if (ofPeriod.period.isValid()) {
        const bool isSame = value(ofPeriod.periodKey) == ofPeriod.period;
        for (auto amount = ofPeriod.amounts.begin(); amount != ofPeriod.amounts.end(); ++amount) {
            sums.insert(amount.key(), isSame ? addedTo(value(amount.key()), *amount) : *amount);
        }
        sums.insert(ofPeriod.periodKey, ofPeriod.period);
    }
    setAll(sums);
}

} // namespace ostrelle
