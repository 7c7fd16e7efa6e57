// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DefaultsChanges.h"
#include "platform/FileError.h"

#include <QJsonObject>
#include <QString>
#include <memory>

namespace ostrelle {

/// The file of a defaults store: one JSON object, with taggedValue() under each key, that only its user can
/// read. Several processes may share it; at any instant it is whole. A file that is not valid is set aside
/// under another name. For one thread at a time.
class DefaultsFile {
public:
    /// The file is there but can neither be read nor set aside: nothing may be put in its place.
    class OffLimits : public FileError {
    public:
        explicit OffLimits(const FileError& reason) : FileError(reason) {}
    };

    /// The file and its folder need not exist yet.
    explicit DefaultsFile(QString path);
    ~DefaultsFile();
    DefaultsFile(const DefaultsFile&) = delete;
    DefaultsFile& operator=(const DefaultsFile&) = delete;

    /// All that the file holds now, entries that nobody here understands included; costs next to nothing when
    /// it is as it was the last time. Throws OffLimits.
    QJsonObject load();

    /// Makes the changes on top of what the file holds by now, flushed to disk, and returns all of it. A file
    /// that has them already is not written. Throws OffLimits, and FileError when it cannot be written.
    QJsonObject apply(const DefaultsChanges& changes);

    /// What the log should say of a damaged file that was set aside since the last call; mostly empty.
    QString takeNotice();

private:
    class Snapshot;

    bool isRead();
    void readOrSetAside();
    void setAside();
    void replace(const QJsonObject& values);

    QString m_path;
    QString m_notice;
    std::unique_ptr<const Snapshot> m_snapshot; // the state of the file that m_values comes from
    QJsonObject m_values;
};

} // namespace ostrelle
