// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/RunOnlyDefaults.h"

namespace ostrelle {

QVariant RunOnlyDefaults::value(const QString& key) const {
    const auto replaced = m_replaced.constFind(key);
    return replaced != m_replaced.constEnd() ? *replaced : m_stored.value(key);
}

void RunOnlyDefaults::set(const QString& key, const QVariant& value) {
    const auto replaced = m_replaced.find(key);
    if (replaced != m_replaced.end()) {
        *replaced = value;
    } else {
        m_stored.set(key, value);
    }
}

void RunOnlyDefaults::remove(const QString& key) {
    const auto replaced = m_replaced.find(key);
    if (replaced != m_replaced.end()) {
        *replaced = QVariant();
    } else {
        m_stored.remove(key);
    }
}

} // namespace ostrelle
