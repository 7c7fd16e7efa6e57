// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Gate.h"
#include "core/TaskGroup.h"
#include "transfer/LocalScanParts.h"
#include "transfer/SeenImage.h"

#include <QCoroTask>
#include <QHash>
#include <QList>
#include <QSet>
#include <QString>
#include <memory>
#include <utility>

namespace ostrelle {

/// An image as a scan has seen it, and what is to be done with it.
struct QueuedImage {
    SeenImage image;
    ImageRequest request;
};

/// The images that one scan has queued.
struct CaptionBatch {
    explicit CaptionBatch(PlainLog& log);

    TaskGroup tasks;
    Gate settling{1}; ///< one group at a time
    int started = 0;
    int processed = 0;
    int failed = 0;
};

/// The images on their way from a scan to their captions. Each rests for two seconds, in which whoever is
/// still writing it gets on, and is captioned then. All images may be on their way at once: what limits the
/// work is what captions them. For the thread of the event loop only.
class CaptionQueue {
public:
    explicit CaptionQueue(LocalScanParts parts) : m_parts(std::move(parts)) {}

    /// Each image is in the works until its task, which belongs to the batch, has ended. All must have an
    /// entry.
    void add(const QString& folder, const QList<QueuedImage>& images,
             const std::shared_ptr<CaptionBatch>& batch);

    /// Gives back all images that still rest, as if they had never been queued. Those that are being
    /// captioned are finished.
    void withdraw();
    /// Counts the withdrawals.
    quint64 round() const { return m_round; }

private:
    QCoro::Task<> rest(QString folder, QList<QueuedImage> images, std::shared_ptr<CaptionBatch> batch);
    void begin(const QueuedImage& queued, const SeenImage& now, const std::shared_ptr<CaptionBatch>& batch);
    QCoro::Task<> run(ImageRequest request, std::shared_ptr<CaptionBatch> batch);
    /// Whether the image was changed so often that another attempt has to wait.
    bool isRestless(const QString& name);
    QCoro::Task<ImageOutcome> caption(ImageRequest request);
    void say(const QString& words);

    LocalScanParts m_parts;
    QSet<QString> m_resting;
    QHash<QString, int> m_changes; ///< attempts in a row that ended as somebody had changed the image
    quint64 m_round = 1;
};

} // namespace ostrelle
