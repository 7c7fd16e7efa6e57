// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DefaultsStore.h"

#include <QHash>

namespace ostrelle {

/// The user's defaults with some values replaced for this run. What is replaced is never stored, neither its
/// first value nor a later one; every other key goes through to the store below.
class RunOnlyDefaults : public DefaultsStore {
public:
    /// The store has to outlive this one.
    explicit RunOnlyDefaults(DefaultsStore& stored) : m_stored(stored) {}

    void replace(const QString& key, const QVariant& value) { m_replaced.insert(key, value); }

    QVariant value(const QString& key) const override;
    void set(const QString& key, const QVariant& value) override;
    void remove(const QString& key) override;

private:
    DefaultsStore& m_stored;
    QHash<QString, QVariant> m_replaced;
};

} // namespace ostrelle
