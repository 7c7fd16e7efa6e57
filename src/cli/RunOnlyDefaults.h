// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DefaultsStore.h"

#include <QCoroTask>
#include <QHash>

namespace ostrelle {

/// The user's defaults, read-only: changes last for this run and are never stored. A settings store loaded
/// from it leaves the desktop program's settings alone.
class RunOnlyDefaults : public DefaultsStore {
public:
    /// The store must outlive this one.
    explicit RunOnlyDefaults(const DefaultsStore& stored) : m_stored(stored) {}

    QVariant value(const QString& key) const override {
        const auto changed = m_changed.constFind(key);
        return changed != m_changed.constEnd() ? *changed : m_stored.value(key);
    }
    void set(const QString& key, const QVariant& value) override { m_changed.insert(key, value); }
    void remove(const QString& key) override { m_changed.insert(key, QVariant()); }
    QCoro::Task<bool> saved(QString key) const override {
        if (m_changed.contains(key)) {
            co_return false;
        }
        co_return co_await m_stored.saved(key);
    }
    QCoro::Task<> finished() const override { co_await m_stored.finished(); }
    bool isAllSaved() const override { return m_changed.isEmpty() && m_stored.isAllSaved(); }

private:
    const DefaultsStore& m_stored;
    QHash<QString, QVariant> m_changed;
};

} // namespace ostrelle
