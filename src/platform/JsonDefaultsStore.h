// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DefaultsStore.h"
#include "platform/PlainLog.h"

#include <QCoroTask>
#include <QJsonObject>
#include <QString>
#include <memory>

namespace ostrelle {

/// A defaults store in one JSON file that only its user can read. Each key holds an object whose one member
/// names the type, such as {"ftpPort": {"integer": 21}}, so that types survive exactly.
///
/// Not thread-safe. No caller waits for the disk: a thread of the store saves the changes, one save at a
/// time, each with everything changed before it began. The file is whole at any instant, and a killed process
/// loses only its last moments of changes; the destructor waits and saves the rest.
///
/// Several processes may share the file: each sees the others' changes at its next read, unless a save of its
/// own is running. A save changes only its own keys, and amounts are added to the others' figures. An invalid
/// file is set aside under another name and an unreadable one is left alone; both are logged.
class JsonDefaultsStore : public DefaultsStore {
public:
    /// The file and its folder need not exist yet. The log must outlive the store.
    JsonDefaultsStore(const QString& path, PlainLog& log);
    ~JsonDefaultsStore() override;
    JsonDefaultsStore(const JsonDefaultsStore&) = delete;
    JsonDefaultsStore& operator=(const JsonDefaultsStore&) = delete;

    QVariant value(const QString& key) const override;
    void set(const QString& key, const QVariant& value) override;
    void remove(const QString& key) override;
    void setAll(const QVariantMap& values) override;
    void addAll(const QVariantMap& amounts, const PeriodAmounts& ofPeriod) override;
    QCoro::Task<bool> saved(QString key) const override;
    QCoro::Task<> finished() const override;
    bool isAllSaved() const override;
    void saveAgain() override;

private:
    struct State;

    static QCoro::Task<bool> saved(std::shared_ptr<State> state, QString key);
    static QCoro::Task<> finished(std::shared_ptr<State> state);
    static QCoro::Task<> saveEnded(std::shared_ptr<State> state);

    std::shared_ptr<State> m_state; // shared with the tasks that wait for a save
};

} // namespace ostrelle
