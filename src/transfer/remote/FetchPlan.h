// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/LoopTurn.h"
#include "transfer/remote/FetchParts.h"
#include "transfer/remote/ServerFiles.h"

#include <QCoroTask>
#include <QHash>
#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

namespace ostrelle {

/// The files that one poll or full download fetches.
struct FetchPlan {
    QList<FTPFileInfo> metadata = {};
    QList<FTPFileInfo> images = {};
    /// Images that are not fetched, as others of their names were captioned before.
    QStringList leftAlone = {};

    bool isEmpty() const { return metadata.isEmpty() && images.isEmpty(); }
    qint64 count() const { return metadata.size() + images.size(); }
};

/// Takes out the images whose sidecars have failed to come for the first time. Without them they would be
/// captioned without what the photographer has noted; those that fail again are not waited for.
void leaveForSidecars(const QList<FTPFileInfo>& sidecars, const FetchLedger& ledger,
                      QList<FTPFileInfo>* images);

/// Decides what is fetched of the files on a server, and logs why the others are not. Lives on the coroutine
/// frame that executes it.
class FetchPlanning {
public:
    FetchPlanning(FetchParts parts, FetchCare care) : m_parts(parts), m_care(care) {}
    FetchPlanning(const FetchPlanning&) = delete;
    FetchPlanning& operator=(const FetchPlanning&) = delete;

    QCoro::Task<FetchPlan> execute(ServerFiles files);

private:
    void decideOnImage(const FTPFileInfo& file);
    void decideOnMetadata(const FTPFileInfo& file);
    void take(const FTPFileInfo& file, const FetchDecision& decision, QList<FTPFileInfo>* list);
    bool isPoll() const { return m_care == FetchCare::poll; }

    FetchParts m_parts;
    FetchCare m_care;
    QHash<QString, LocalCopy> m_copies;
    FetchPlan m_plan;
    QSet<QString> m_captioned; ///< images whose local copy stays, without their extensions
    QStringList m_imageLines;  ///< for the log
    QStringList m_metadataLines;
};

} // namespace ostrelle
