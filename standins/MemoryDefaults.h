// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DefaultsStore.h"

#include <QCoroTask>
#include <QMap>

namespace ostrelle {

/// A defaults store that lasts as long as the test.
class MemoryDefaults : public DefaultsStore {
public:
    QVariant value(const QString& key) const override { return values.value(key); }
    void set(const QString& key, const QVariant& value) override {
        values.insert(key, value);
        m_isAllSaved = !isDiskFull;
    }
    void remove(const QString& key) override {
        values.remove(key);
        m_isAllSaved = !isDiskFull;
    }
    QCoro::Task<bool> saved(QString) const override { co_return !isDiskFull; }

    bool isAllSaved() const override { return m_isAllSaved; }
    void saveAgain() override { m_isAllSaved = !isDiskFull; }

    QMap<QString, QVariant> values;
    bool isDiskFull = false; ///< changes last until the program ends

private:
    bool m_isAllSaved = true;
};

} // namespace ostrelle
