// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Overtaking.h"
#include "core/TaskGroup.h"
#include "transfer/CaptionQueue.h"
#include "transfer/CaptionedImages.h"
#include "transfer/ImageCheck.h"
#include "transfer/LocalScanParts.h"

#include <QCoroTask>
#include <QDateTime>
#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>
#include <memory>

namespace ostrelle {

/// Scans the ingest folder for images without a caption and captions them. Files are read on the folder's own
/// thread; this class only decides. For the thread of the event loop only. Await finished() before destroying
/// it.
class LocalFolderScan {
public:
    explicit LocalFolderScan(LocalScanParts parts);
    LocalFolderScan(const LocalFolderScan&) = delete;
    LocalFolderScan& operator=(const LocalFolderScan&) = delete;

    /// scanFolder(), awaited by finished().
    void startScan(const QString& folder);

    /// Checks each image of the folder once, and resumes when those that need a caption are done. Scans may
    /// overlap while images are captioned, but a folder that is still being checked is not scanned again, as
    /// a network share may hang. Never throws.
    QCoro::Task<> scanFolder(QString folder);

    /// The scans so far begin no further image. Those being captioned are finished.
    void stop() { m_queue.withdraw(); }
    /// Resumes when all scans begun by startScan() are over; never while a network share hangs.
    QCoro::Task<> finished() const { return m_scans.finished(); }

private:
    struct Scan;

    QCoro::Task<> prepare(QString folder);
    QCoro::Task<> lookThrough(std::shared_ptr<Scan> scan);
    QCoro::Task<> look(std::shared_ptr<Scan> scan, QStringList names);
    QCoro::Task<> check(std::shared_ptr<Scan> scan, QList<SeenImage> images, QDateTime seenAt);
    bool isLeftAlone(Scan& scan, const SeenImage& image);
    bool isKnown(const SeenImage& image) const;
    bool needsCaption(Scan& scan, const ImageCheck& check, const QDateTime& seenAt);
    void summarize(const Scan& scan);
    void fail(const Scan& scan, const QString& name, const QString& reason);
    void print(const QString& words);
    void printFor(const QString& name, const QString& words);

    LocalScanParts m_parts;
    CaptionQueue m_queue;
    CaptionedImages m_captioned;
    TaskGroup m_scans;
    QSet<QString> m_failures;                         // paths and reasons passed to the listener
    QHash<QString, QDateTime> m_tidied;               // when each folder was tidied
    QHash<QString, Overtaking::Mark> m_lookedThrough; // folders being checked, and the queue's mark then
};

} // namespace ostrelle
