// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DefaultsStore.h"
#include "platform/PlainLog.h"

#include <QJsonObject>
#include <QString>
#include <memory>

namespace ostrelle {

/// A defaults store over one JSON file that only its user can read. Every key holds an object of one
/// member that names the type, such as {"ftpPort": {"integer": 21}}, so that types survive exactly.
///
/// For one thread; changes are saved on a thread of its own, one save at a time, each with all that was
/// changed until it begins, so that no caller waits for the disk. The file is whole at any instant, and a
/// killed process loses what it changed in its last moments only; the destructor saves the rest and waits.
///
/// Several processes may share the file: each sees the others' changes at its next read that no save of its
/// own is in the way of, and a save changes only its own keys; what is added is added to the others' figures.
/// A file that is not valid is set aside under another name, and one that cannot be read is left alone; the
/// log says so.
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

    std::shared_ptr<State> m_state; // with those who wait for a save, too
};

} // namespace ostrelle
