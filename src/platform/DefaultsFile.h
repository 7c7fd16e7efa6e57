// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DefaultsChanges.h"
#include "platform/FileError.h"

#include <QJsonObject>
#include <QString>
#include <memory>

namespace ostrelle {

/// The file of a defaults store: one JSON object with a taggedValue() under each key, readable by its user
/// only. Several processes may share it; it is whole at any instant. An invalid file is set aside under
/// another name. Not thread-safe.
class DefaultsFile {
public:
    /// The file exists but can be neither read nor set aside: nothing may replace it.
    class OffLimits : public FileError {
    public:
        explicit OffLimits(const FileError& reason) : FileError(reason) {}
    };

    /// The file and its folder need not exist yet.
    explicit DefaultsFile(QString path);
    ~DefaultsFile();
    DefaultsFile(const DefaultsFile&) = delete;
    DefaultsFile& operator=(const DefaultsFile&) = delete;

    /// Everything the file holds now, including entries that nobody here understands. Costs next to nothing
    /// when the file has not changed. Throws OffLimits.
    QJsonObject load();

    /// Applies the changes to the file as it is now, flushes it to disk and returns all its entries. Does not
    /// write a file that already has them. Throws OffLimits, and FileError when the file cannot be written.
    QJsonObject apply(const DefaultsChanges& changes);

    /// The log line about a damaged file set aside since the last call; usually empty.
    QString takeNotice();

private:
    class Snapshot;

    bool isRead();
    void readOrSetAside();
    void setAside();
    void replace(const QJsonObject& values);

    QString m_path;
    QString m_notice;
    std::unique_ptr<const Snapshot> m_snapshot; // the state of the file that m_values was read from
    QJsonObject m_values;
};

} // namespace ostrelle
