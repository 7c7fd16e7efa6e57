// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/SelectionSource.h"

#include "core/Attempt.h"
#include "core/Text.h"
#include "metadata/ImageMetadata.h"
#include "metadata/sidecar/SidecarPath.h"
#include "pipeline/FolderRights.h"
#include "pipeline/FolderWork.h"
#include "pipeline/MissingKey.h"
#include "pipeline/SelectionTally.h"
#include "product/ApiKey.h"

#include <QFileInfo>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;
using Ending = RunTally::Ending;

namespace {

QString nameOf(const QString& file) {
    return QFileInfo(file).fileName();
}

} // namespace

QCoro::Task<bool> SelectionSource::admit() {
    const std::optional<Alert> sidecarAlert = missingSidecarsAlert(m_selection);
    if (sidecarAlert && m_parts.access.isSandboxed()) { // elsewhere the sidecar beside the image serves
        co_await m_parts.alerts.show(*sidecarAlert);
        co_return false;
    }
    co_await createSidecars(m_selection.rawImages());
    if (const std::optional<Alert> alert = missingImagesAlert(m_selection)) {
        co_await m_parts.alerts.show(*alert);
        co_return false;
    }
    if (apiKey(m_parts.defaults).isEmpty()) {
        co_await askForKey(missingKeyAlert(), m_parts.alerts, m_parts.events, m_parts.progress);
        co_return false;
    }
    co_return true;
}

QCoro::Task<> SelectionSource::createSidecars(QStringList rawImages) {
    int created = 0;
    for (const QString& rawImage : std::as_const(rawImages)) {
        const bool isNew = co_await createSidecar(rawImage);
        created += isNew ? 1 : 0;
    }
    if (created > 0) {
        print(u"Created %1 XMP sidecar file(s) for RAW files"_s.arg(created));
    }
}

QCoro::Task<bool> SelectionSource::createSidecar(QString rawImage) {
    const QString sidecar = sidecarPath(rawImage);
    auto look = [rawImage] { return QFileInfo::exists(findSidecar(rawImage)); };
    if (co_await onThreadOf(m_parts.threads, rawImage, look)) {
        co_return false;
    }
    m_access.push_back(std::make_unique<ScopedAccess>(m_parts.access, sidecar));
    if (m_access.back()->isGranted()) {
        print(u"Started security-scoped access for XMP: "_s + nameOf(sidecar));
    }
    auto provide = [rawImage] { return ImageMetadata(rawImage).provideSidecar(); };
    const auto created = co_await attempt(onThreadOf(m_parts.threads, rawImage, provide));
    if (!created) {
        print(u"Could not pre-create XMP sidecar for %1: %2"_s.arg(nameOf(rawImage), created.words()));
        print(u"Will attempt creation during processing instead"_s);
        co_return false;
    }
    if (*created) {
        print(u"Created XMP sidecar for "_s + nameOf(rawImage));
    }
    co_return *created;
}

QCoro::Task<std::optional<RunImages>> SelectionSource::find() {
    co_return RunImages{.files = m_selection.images};
}

QString SelectionSource::openingMessage(qsizetype imageCount) const {
    return u"Processing %1 selected image%2..."_s.arg(imageCount).arg(plural(imageCount));
}

void SelectionSource::logBatches(qsizetype imageCount, qsizetype batchCount) {
    print(u"Processing %1 selected file(s) in %2 batch(es)"_s.arg(imageCount).arg(batchCount));
}

void SelectionSource::logBatch(const QList<ImageOutcome>& images) {
    for (const QString& name : SelectionTally::of(images).rateLimitedNames()) {
        m_parts.log.print(u"[Manual Selection] Failed to process %1: Rate limit exceeded"_s.arg(name));
    }
}

QString SelectionSource::close(const RunTally& tally) {
    if (tally.ending == Ending::interrupted) {
        return interruptionMessage(tally);
    }
    if (tally.ending == Ending::keyMissing) {
        return missingKeyMessage();
    }
    const SelectionTally selection = SelectionTally::of(tally.images);
    print(
        u"Manual selection completed: success=%1, failed=%2, permission errors=%3"_s.arg(selection.success())
            .arg(selection.failed())
            .arg(selection.permissionErrors()));
    return selection.closingMessage();
}

QCoro::Task<> SelectionSource::announce(RunTally tally) {
    if (tally.ending == Ending::keyMissing) {
        return askForKey(missingKeyAlert(), m_parts.alerts, m_parts.events, m_parts.progress);
    }
    return notify(SelectionTally::of(tally.images));
}

QCoro::Task<> SelectionSource::notify(SelectionTally tally) {
    if (tally.success() > 0) {
        print(u"Sending success notification..."_s);
        co_await m_parts.notifications.postProcessingResult(tally.success(), 0, {});
    }
    if (tally.permissionErrors() > 0) {
        co_await notifyPermissionErrors(tally);
        co_await explainPermissions(tally);
    } else if (tally.failed() > 0) {
        print(u"Sending failure notification..."_s);
        co_await m_parts.notifications.postProcessingResult(0, tally.failed(), tally.failedNames(),
                                                            m_parts.access.isSandboxed() ? tally.hint()
                                                                                         : tally.reasons());
    }
}

QCoro::Task<> SelectionSource::notifyPermissionErrors(SelectionTally tally) {
    print(u"Sending critical failure notification..."_s);
    if (tally.mentionsRateLimit()) {
        co_await m_parts.notifications.postRateLimitFailure(tally.failed(), tally.failedNames(),
                                                            tally.errorDetail());
    } else {
        co_await m_parts.notifications.postPermissionFailure(tally.failed(), tally.failedNames(),
                                                             tally.errorDetail());
    }
}

QCoro::Task<> SelectionSource::explainPermissions(SelectionTally tally) {
    const QString folder = tally.firstFailedFolder();
    auto look = [folder] { return folderRights(folder); };
    Alert alert = tally.permissionAlert();
    alert.text += u"\n\n"_s + co_await onThreadPool(m_parts.threads.of(folder), look);
    const QString answer = co_await m_parts.alerts.show(alert);
    if (answer == u"Open System Preferences") {
        m_workspace.openLink(QUrl::fromLocalFile(folder)); // where the desktop shows and changes its rights
    } else if (answer == u"Use Watch Folder Instead") {
        Q_EMIT m_parts.events.chooseWatchFolder();
    }
}

void SelectionSource::print(const QString& words) {
    m_parts.log.print(u"[MenuContentView] "_s + words);
}

} // namespace ostrelle
