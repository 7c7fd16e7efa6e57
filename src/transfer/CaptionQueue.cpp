// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/CaptionQueue.h"

#include "core/Attempt.h"
#include "core/OnThreadPool.h"

#include <QFileInfo>
#include <QStringList>
#include <chrono>
#include <optional>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::seconds startDelay{2};

QList<SeenImage> seeAgain(const QString& folder, const QList<QueuedImage>& images) {
    QStringList names;
    for (const QueuedImage& queued : images) {
        names.append(queued.image.name);
    }
    return seeImages(folder, names);
}

} // namespace

CaptionBatch::CaptionBatch(PlainLog& log)
    : tasks([&log](const QString& words) { log.print(u"[AppDelegate] A caption task failed: "_s + words); }) {
}

void CaptionQueue::add(const QString& folder, const QList<QueuedImage>& images,
                       const std::shared_ptr<CaptionBatch>& batch) {
    for (const QueuedImage& queued : images) {
        const QString& name = queued.image.name;
        m_parts.tracker.begin(name);
        m_resting.insert(name);
        ++batch->started;
        print(u"→ Task started for "_s + name);
    }
    m_parts.count.add(images.size());
    batch->tasks.spawn(rest(folder, images, batch));
}

void CaptionQueue::withdraw() {
    m_withdrawals.overtake();
    const QSet<QString> resting = std::exchange(m_resting, {});
    for (const QString& name : resting) {
        m_parts.tracker.release(name);
    }
    m_parts.count.withdraw(resting.size());
    m_parts.turns.dismissImages();
}

QCoro::Task<> CaptionQueue::rest(QString folder, QList<QueuedImage> images,
                                 std::shared_ptr<CaptionBatch> batch) {
    const Overtaking::Mark mark = m_withdrawals.mark();
    co_await attempt(m_parts.clock.sleep(startDelay));
    // One group at a time: thousands of images whose rest ends at the same moment would block the event loop.
    const auto turn = co_await batch->settling.enter();
    if (mark.isOvertaken()) {
        co_return;
    }
    auto look = [folder, images] { return seeAgain(folder, images); };
    const QList<SeenImage> now = co_await onThreadPool(m_parts.threads.of(folder), look);
    if (mark.isOvertaken()) {
        co_return;
    }
    for (qsizetype index = 0; index < images.size(); ++index) {
        begin(images[index], now[index], batch);
    }
}

void CaptionQueue::begin(const QueuedImage& queued, const SeenImage& now,
                         const std::shared_ptr<CaptionBatch>& batch) {
    const QString& name = queued.image.name;
    m_resting.remove(name);
    if (now.entry != queued.image.entry) {
        // Half an image from a camera or an ingest tool would be captioned, or left alone for a minute.
        print(name + u": Still being written, left for the next scan"_s);
        leave(name);
    } else if (now.entry && m_parts.manifest.isProcessed(*now.entry)) {
        print(name + u": Captioned by another run meanwhile"_s);
        leave(name);
    } else {
        batch->tasks.spawn(run(queued.request, batch));
    }
}

QCoro::Task<> CaptionQueue::run(ImageRequest request, std::shared_ptr<CaptionBatch> batch) {
    const QString name = QFileInfo(request.file).fileName();
    const ImageOutcome outcome = co_await caption(request);
    if (outcome.kind == OutcomeKind::notBegun) {
        leave(name);
        co_return;
    }
    if (outcome.kind == OutcomeKind::changed && !isRestless(name)) {
        print(name + u": Changed by another program meanwhile, left for the next scan"_s);
        leave(name);
        co_return;
    }
    m_changes.remove(name);
    const bool succeeded = isDone(outcome.kind);
    print(u"→ analyzeSingle returned %1 for %2"_s.arg(succeeded ? u"true"_s : u"false"_s, name));
    if (outcome.kind == OutcomeKind::unwritable && outcome.editConditions) {
        m_parts.tracker.setUnwritable(name, *outcome.editConditions);
    }
    m_parts.tracker.finish(name, succeeded);
    m_parts.count.finishOne();
    ++(succeeded ? batch->processed : batch->failed);
    print(u"✓ Completed %1 - %2"_s.arg(name, succeeded ? u"SUCCESS"_s : u"FAILED"_s));
}

void CaptionQueue::leave(const QString& name) {
    m_parts.tracker.release(name);
    m_parts.count.withdraw(1);
}

bool CaptionQueue::isRestless(const QString& name) {
    constexpr int mostInARow = 3;
    return ++m_changes[name] >= mostInARow;
}

QCoro::Task<ImageOutcome> CaptionQueue::caption(ImageRequest request) {
    std::optional<ScopedAccess> access;
    if (const std::optional<QString> folder = m_parts.settings.ingestFolder()) {
        access.emplace(m_parts.access, *folder);
    }
    print(u"→ Calling analyzeSingle for "_s + QFileInfo(request.file).fileName());
    const auto outcome = co_await attempt(m_parts.captioning(request));
    if (!outcome) {
        ImageOutcome failed;
        failed.kind = OutcomeKind::failed;
        co_return failed;
    }
    co_return *outcome;
}

void CaptionQueue::print(const QString& words) {
    m_parts.log.print(u"[AppDelegate]   "_s + words);
}

} // namespace ostrelle
