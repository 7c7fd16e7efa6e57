// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Gate.h"
#include "core/Overtaking.h"
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

/// An image as a scan saw it, and the request to caption it.
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

/// The images on their way from a scan to their captions. Each rests for two seconds, so that one still being
/// written shows, and is then captioned. There is no limit on queued images: the captioning sets its own. For
/// the thread of the event loop only.
class CaptionQueue {
public:
    explicit CaptionQueue(LocalScanParts parts) : m_parts(std::move(parts)) {}

    /// Queues images of the folder, all of which must have an entry. Each is in the works until its task,
    /// which belongs to the batch, has ended.
    void add(const QString& folder, const QList<QueuedImage>& images,
             const std::shared_ptr<CaptionBatch>& batch);

    /// Withdraws all images not being captioned yet, as if they had never been queued. Those being captioned
    /// are finished.
    void withdraw();
    /// For a scan: once overtaken by a withdrawal, it must queue nothing more.
    Overtaking::Mark mark() const { return m_withdrawals.mark(); }

private:
    QCoro::Task<> rest(QString folder, QList<QueuedImage> images, std::shared_ptr<CaptionBatch> batch);
    void begin(const QueuedImage& queued, const SeenImage& now, const std::shared_ptr<CaptionBatch>& batch);
    QCoro::Task<> run(ImageRequest request, std::shared_ptr<CaptionBatch> batch);
    /// The image is out of the works, without a result.
    void leave(const QString& name);
    /// Whether the image has changed so often in a row that the next attempt must wait.
    bool isRestless(const QString& name);
    QCoro::Task<ImageOutcome> caption(ImageRequest request);
    void print(const QString& words);

    LocalScanParts m_parts;
    QSet<QString> m_resting;
    QHash<QString, int> m_changes; ///< attempts in a row that ended because the image had changed
    Overtaking m_withdrawals;
};

} // namespace ostrelle
