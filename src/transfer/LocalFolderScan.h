// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/TaskGroup.h"
#include "transfer/CaptionQueue.h"
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

/// Looks through the ingest folder for images without a caption and captions them. Files are read on the
/// folder's own thread; here it is only decided. For the thread of the event loop only; await finished()
/// before the scan is destroyed.
class LocalFolderScan {
public:
    explicit LocalFolderScan(LocalScanParts parts);
    LocalFolderScan(const LocalFolderScan&) = delete;
    LocalFolderScan& operator=(const LocalFolderScan&) = delete;

    /// scanFolder(), awaited by finished().
    void startScan(const QString& folder);

    /// Looks at each image of the folder once, and resumes when those that need it are captioned. Scans may
    /// overlap while images are captioned; while a folder is still being looked through, another scan of it
    /// does nothing, since a network share may hang. Never throws.
    QCoro::Task<> scanFolder(QString folder);

    /// No further image is begun by the scans so far. What is being captioned is finished.
    void stop() { m_queue.withdraw(); }
    /// Resumes when no scan is under way that was begun by startScan(). While a network share hangs, it does
    /// not.
    QCoro::Task<> finished() const { return m_scans.finished(); }

private:
    struct Scan;

    QCoro::Task<> prepare(QString folder);
    QCoro::Task<> lookThrough(std::shared_ptr<Scan> scan);
    QCoro::Task<> look(std::shared_ptr<Scan> scan, QStringList names);
    bool isOvertaken(const Scan& scan) const;
    bool isLeftAlone(Scan& scan, const SeenImage& image);
    bool isKnown(const SeenImage& image) const;
    bool needsCaption(Scan& scan, const ImageCheck& check);
    void summarize(const Scan& scan);
    void fail(const Scan& scan, const QString& name, const QString& reason);
    void say(const QString& words);
    void sayOf(const QString& name, const QString& words);

    LocalScanParts m_parts;
    CaptionQueue m_queue;
    TaskGroup m_scans;
    QSet<QString> m_failures;                // paths and reasons that the listener has heard of
    QHash<QString, QDateTime> m_tidied;      // when each folder was
    QHash<QString, quint64> m_lookedThrough; // folders now looked through, and the queue's round then
};

} // namespace ostrelle
