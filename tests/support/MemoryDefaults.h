// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DefaultsStore.h"

#include <QMap>

namespace ostrelle {

/// A defaults store that lasts as long as the test.
class MemoryDefaults : public DefaultsStore {
public:
    QVariant value(const QString& key) const override { return values.value(key); }
    void set(const QString& key, const QVariant& value) override { values.insert(key, value); }
    void remove(const QString& key) override { values.remove(key); }
    QCoro::Task<bool> saved(QString) const override { co_return !isDiskFull; }

    bool isAllSaved() const override { return !isDiskFull; }

    QMap<QString, QVariant> values;
    bool isDiskFull = false; ///< what is set lasts until the program ends
};

} // namespace ostrelle
