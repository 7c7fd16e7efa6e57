// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DefaultsStore.h"
#include "platform/PlainLog.h"

#include <QJsonObject>
#include <QString>
#include <exception>
#include <memory>

namespace ostrelle {

/// A defaults store over one JSON file that only its user can read. Every key holds an object of one
/// member that names the type, such as {"ftpPort": {"integer": 21}}, so that types survive exactly.
///
/// Several processes may share the file: each sees the others' changes at its next read, and a write
/// changes only its own key. A file that is not valid is set aside under another name, and one that cannot
/// be read is left alone; the log says so.
class JsonDefaultsStore : public DefaultsStore {
public:
    /// The file and its folder need not exist yet. The log must outlive the store.
    JsonDefaultsStore(QString path, PlainLog& log);
    ~JsonDefaultsStore() override;

    QVariant value(const QString& key) const override;
    void set(const QString& key, const QVariant& value) override;
    void remove(const QString& key) override;
    void setAll(const QVariantMap& values) override;
    bool isSaved(const QString& key) const override { return !m_unsaved.contains(key); }

private:
    class Snapshot;

    /// `changes` has null for a removed key.
    void change(const QJsonObject& changes);
    void save();
    void refresh() const;
    bool reload() const;
    void setAside() const;
    void leaveFileAlone(const std::exception& reason) const;

    QString m_path;
    PlainLog& m_log;
    // The cache of the file is brought up to date by reading, hence mutable.
    mutable std::unique_ptr<const Snapshot> m_snapshot; // the state of the file that m_stored comes from
    mutable QJsonObject m_stored;
    mutable bool m_isFileOffLimits = false;
    QJsonObject m_unsaved; // changes that the file does not have yet, with null for a removed key
};

} // namespace ostrelle
