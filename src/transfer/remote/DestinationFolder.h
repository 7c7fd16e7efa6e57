// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/FileAccess.h"
#include "platform/FolderThreads.h"
#include "platform/ImageClaims.h"
#include "transfer/remote/FetchDecision.h"
#include "transfer/remote/ServerFiles.h"

#include <QCoroTask>
#include <QHash>
#include <QString>
#include <QStringList>
#include <memory>
#include <optional>
#include <vector>

namespace ostrelle {

/// The local folder that files from a server go into. Everything on the disk is done on the folder's threads.
/// The references must outlive the tasks.
class DestinationFolder {
public:
    /// What happens to the file in whose place a new one comes.
    enum class OldFile { replaced, kept };

    using Claims = std::vector<std::shared_ptr<const ImageClaim>>;

    DestinationFolder(QString path, FolderThreads& threads, FileAccess& access, ImageClaims& claims);

    const QString& path() const { return m_path; }
    QString pathOf(const QString& name) const { return m_path + u'/' + name; }

    /// Makes the folder, if it can, removes what a killed program has left in it, and finds out what it takes
    /// for the same name. Throws Error if the folder has come to lie on another disk, as when its own has
    /// been unmounted.
    QCoro::Task<NameRules> prepare();
    /// What lies in the folder under these names.
    QCoro::Task<QHash<QString, LocalCopy>> copiesOf(QStringList names);
    QCoro::Task<LocalCopy> copyOf(QString name);

    /// Reserves the image, or those that the sidecar belongs to. Nothing while one is being captioned.
    QCoro::Task<std::optional<Claims>> claim(QString name);

    /// A hidden path in the folder for a file that is being fetched.
    QString temporaryPath(const QString& name) const;
    /// Puts a fetched file in its place for good. An old file to be kept goes to the desktop's trash or,
    /// where there is none, stays under its name with ".replaced" added, and a number if needed. Where names
    /// fold, each old file is kept: it may be captioned under another spelling. Throws FileError.
    QCoro::Task<> bringIn(QString temporaryPath, QString name, OldFile old);
    /// Takes an old file away like one to be kept.
    QCoro::Task<> putAway(QString name);
    /// Removes a file that was not fetched whole.
    QCoro::Task<> discard(QString temporaryPath);

private:
    QString m_path;
    FolderThreads& m_threads;
    FileAccess& m_access;
    ImageClaims& m_claims;
    NameRules m_rules = NameRules::exact;
    std::optional<quint64> m_device; ///< that the folder was on at first
};

} // namespace ostrelle
