// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/remote/DownloadedImages.h"

#include "core/Attempt.h"
#include "core/OnThreadPool.h"
#include "core/Text.h"
#include "metadata/ImageMetadata.h"
#include "metadata/rendition/CutShort.h"
#include "transfer/remote/DestinationFolder.h"

#include <QFileInfo>
#include <QSet>
#include <chrono>
#include <optional>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// What is found of a downloaded image before it is captioned.
struct Finding {
    bool exists = false;
    qint64 size = 0;
    bool isCutShort = false;
    bool isSidecarNew = false;
    QString sidecarFailure = {};
};

/// Makes the missing sidecar of a file that is not empty. For worker threads.
Finding examine(const QString& path) {
    const QFileInfo file(path);
    Finding finding{.exists = file.exists(), .size = file.size()};
    finding.isCutShort = attemptNow([&path] { return isCutShort(path); }).valueOr(false);
    if (finding.size > 0 && !finding.isCutShort) {
        const auto made = attemptNow([&path] { return ImageMetadata(path).provideSidecar(); });
        finding.isSidecarNew = made.valueOr(false);
        finding.sidecarFailure = made ? QString() : made.words();
    }
    return finding;
}

QString nameOf(const QString& file) {
    return QFileInfo(file).fileName();
}

} // namespace

QCoro::Task<QStringList> DownloadedImages::caption(QStringList images) {
    const Overtaking::Mark mark = m_parts.turns.stopMark();
    QStringList left;
    QSet<QString> old;
    for (const QString& file : std::as_const(images)) {
        const bool isKnown = co_await m_parts.manifest.isProcessed(file);
        if (isKnown) {
            old.insert(file);
        }
    }
    for (qsizetype index = 0; index < images.size(); ++index) {
        m_parts.progress.expectDownloaded(index + 1, images.size());
        const QString file = images.at(index);
        const bool isBegun = !mark.isOvertaken() && co_await process(file, old.contains(file), mark);
        left += isBegun ? QStringList() : QStringList{file};
    }
    if (images.isEmpty()) {
        m_parts.status.setFtpStatusMessage(std::nullopt);
    }
    m_parts.progress.endDownloaded();
    co_return left;
}

QCoro::Task<QStringList> DownloadedImages::captionAll(QStringList images) {
    const Overtaking::Mark mark = m_parts.turns.stopMark();
    QStringList left;
    print(u"Manual download completed: %1 files downloaded"_s.arg(images.size()));
    qint64 successful = 0;
    QStringList failed;
    for (qsizetype index = 0; index < images.size(); ++index) {
        const QString file = images.at(index);
        if (mark.isOvertaken()) {
            left.append(file);
            continue;
        }
        m_parts.progress.expectDownloaded(index + 1, images.size());
        const bool wasKnown = co_await m_parts.manifest.isProcessed(file);
        if (wasKnown) {
            print(nameOf(file) + u" already processed, skipping"_s);
        } else if (!co_await process(file, false, mark)) {
            left.append(file);
            continue;
        }
        const bool isKnown = co_await m_parts.manifest.isProcessed(file);
        successful += isKnown ? 1 : 0;
        failed += isKnown ? QStringList() : QStringList{nameOf(file)};
    }
    if (m_parts.turns.isClosed()) {
        co_return left; // the program ends
    }
    m_parts.status.setFtpStatusMessage(
        images.isEmpty()
            ? std::nullopt
            : std::optional(
                  u"Finished captioning %1 file%2"_s.arg(images.size()).arg(plural(images.size()))));
    m_parts.progress.endDownloaded();
    if (successful + failed.size() > 0) {
        co_await m_parts.notifications.postProcessingResult(successful, failed.size(), failed);
        print(u"Manual FTP download notification sent: %1 successful, %2 failed"_s.arg(successful)
                  .arg(failed.size()));
    }
    co_return left;
}

QCoro::Task<bool> DownloadedImages::process(QString file, bool isOld, Overtaking::Mark mark) {
    const QString name = nameOf(file);
    print(u"Processing downloaded file: "_s + name);
    if (m_parts.tracker.isProcessing(name)) {
        print(u"Already processing %1, skipping"_s.arg(name));
        co_return true;
    }
    const bool isKnown = co_await m_parts.manifest.isProcessed(file);
    if (isKnown && !isOld) {
        print(name + u" was captioned by another run meanwhile"_s);
        co_return true;
    }
    if (isKnown) {
        print(name + u" already processed, skipping and cleaning up downloaded file"_s);
        DestinationFolder folder(QFileInfo(file).path(), m_parts.threads, m_parts.access, m_parts.claims);
        co_await attempt(folder.putAway(name));
        co_return true;
    }
    const ScopedAccess access(m_parts.access, QFileInfo(file).path());
    if (access.isGranted()) {
        print(u"Started security-scoped access for destination folder"_s);
    }
    bool isBegun = true;
    const bool ready = co_await isReady(file);
    if (ready) {
        print(u"Starting analysis for %1 (security-scoped access: %2)"_s.arg(
            name, access.isGranted() ? u"true"_s : u"false"_s));
        isBegun = co_await captionOne(file, mark);
    }
    if (access.isGranted()) {
        print(u"Stopped security-scoped access for destination folder"_s);
    }
    co_return isBegun;
}

QCoro::Task<bool> DownloadedImages::isReady(QString file) {
    const QString name = nameOf(file);
    auto look = [file] { return examine(file); };
    const Finding found = co_await onThreadPool(m_parts.threads.of(QFileInfo(file).path()), look);
    if (!found.exists) {
        print(u"File does not exist: "_s + file);
        fail(file, u"It is not there any more."_s);
        co_return false;
    }
    if (found.size == 0) {
        print(u"File is empty (0 bytes), skipping: "_s + name);
        fail(file, u"The file is empty."_s);
        co_return false;
    }
    if (found.isCutShort) { // the server did not tell when the upload ended
        print(u"File is cut short, skipping until it grows: "_s + name);
        fail(file, u"The file is cut short."_s);
        co_return false;
    }
    print(u"File verified: %1, size: %2 bytes"_s.arg(name, QString::number(found.size)));
    if (!found.sidecarFailure.isEmpty()) {
        print(u"%1: Failed to create XMP sidecar: %2, skipping"_s.arg(name, found.sidecarFailure));
        fail(file, found.sidecarFailure);
        co_return false;
    }
    if (found.isSidecarNew) {
        print(name + u": Created XMP sidecar"_s);
    }
    co_return true;
}

void DownloadedImages::fail(const QString& file, const QString& reason) {
    ImageOutcome outcome;
    outcome.file = file;
    outcome.kind = OutcomeKind::refused;
    outcome.reason = reason;
    m_parts.onFailure(outcome);
}

QCoro::Task<bool> DownloadedImages::captionOne(QString file, Overtaking::Mark mark) {
    constexpr std::chrono::seconds rest{1};
    const QString name = nameOf(file);
    m_parts.tracker.begin(name);
    co_await attempt(m_parts.clock.sleep(rest));
    auto outcome = co_await attempt(m_parts.captioning(file));
    while (outcome && outcome->kind == OutcomeKind::notBegun) { // dismissed
        if (mark.isOvertaken()) {
            m_parts.tracker.release(name);
            co_return false;
        }
        outcome = co_await attempt(m_parts.captioning(file));
    }
    const bool isDone = outcome && ostrelle::isDone(outcome->kind);
    m_parts.tracker.finish(name, isDone);
    print(isDone ? u"✓ Successfully processed "_s + name : u"✗ Failed to process "_s + name);
    print(u"Finished captioning %1 - %2"_s.arg(name, isDone ? u"success"_s : u"failed"_s));
    co_return true;
}

void DownloadedImages::print(const QString& words) {
    m_parts.log.print(u"[AppDelegate] "_s + words);
}

} // namespace ostrelle
