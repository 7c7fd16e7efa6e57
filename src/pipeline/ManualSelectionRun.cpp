// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/ManualSelectionRun.h"

#include "core/Attempt.h"
#include "core/Text.h"
#include "metadata/ImageMetadata.h"
#include "metadata/sidecar/SidecarPath.h"
#include "pipeline/FolderTidying.h"
#include "pipeline/FolderWork.h"
#include "pipeline/MissingKey.h"

#include <QFileInfo>

#include "product/ApiKey.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QString nameOf(const QString& file) {
    return QFileInfo(file).fileName();
}

/// The error of a batch's image is always the same; what is told apart is what lay beneath it.
std::exception_ptr reasonOf(const AnalyzedFile& file) {
    return file.cause ? file.cause : std::make_exception_ptr(*file.error);
}

} // namespace

QCoro::Task<> ManualSelectionRun::execute(QStringList files, HeldAccess access) {
    HeldAccess held = std::move(access); // a parameter may outlive the run, a local does not
    const ManualSelection selection = ManualSelection::of(files);
    if (!co_await admit(selection, &held)) {
        co_return;
    }
    const Ending ending = co_await captionInTurn(selection.images);
    // By now others may caption again: neither the desktop nor the user need be waited for.
    if (ending == Ending::keyMissing) {
        co_await askForKey();
    } else if (ending == Ending::completed) {
        co_await notify();
    }
}

QCoro::Task<bool> ManualSelectionRun::admit(ManualSelection selection, HeldAccess* access) {
    if (const std::optional<Alert> alert = missingSidecarsAlert(selection)) {
        co_await m_parts.alerts.show(*alert);
        co_return false;
    }
    co_await createSidecars(selection.rawImages(), access);
    if (const std::optional<Alert> alert = missingImagesAlert(selection)) {
        co_await m_parts.alerts.show(*alert);
        co_return false;
    }
    co_return true;
}

QCoro::Task<> ManualSelectionRun::createSidecars(QStringList rawImages, HeldAccess* access) {
    int created = 0;
    for (const QString& rawImage : std::as_const(rawImages)) {
        const bool isNew = co_await createSidecar(rawImage, access);
        created += isNew ? 1 : 0;
    }
    if (created > 0) {
        m_parts.console.print(
            u"[MenuContentView] Created %1 XMP sidecar file(s) for RAW files"_s.arg(created));
    }
}

QCoro::Task<bool> ManualSelectionRun::createSidecar(QString rawImage, HeldAccess* access) {
    const QString sidecar = sidecarPath(rawImage);
    auto look = [rawImage] { return QFileInfo::exists(findSidecar(rawImage)); };
    if (co_await onThreadOf(m_parts.threads, rawImage, look)) {
        co_return false;
    }
    access->push_back(std::make_unique<ScopedAccess>(m_parts.access, sidecar));
    if (access->back()->isGranted()) {
        m_parts.console.print(u"[MenuContentView] Started security-scoped access for XMP: "_s +
                              nameOf(sidecar));
    }
    auto provide = [rawImage] { return ImageMetadata(rawImage).provideSidecar(); };
    const auto created = co_await attempt(onThreadOf(m_parts.threads, rawImage, provide));
    if (!created) {
        m_parts.console.print(u"[MenuContentView] Could not pre-create XMP sidecar for %1: %2"_s.arg(
            nameOf(rawImage), created.words()));
        m_parts.console.print(u"[MenuContentView] Will attempt creation during processing instead"_s);
        co_return false;
    }
    if (*created) {
        m_parts.console.print(u"[MenuContentView] Created XMP sidecar for "_s + nameOf(rawImage));
    }
    co_return *created;
}

QCoro::Task<ManualSelectionRun::Ending> ManualSelectionRun::captionInTurn(QStringList images) {
    if (!hasKey()) {
        co_return Ending::keyMissing;
    }
    const auto turn = co_await m_parts.turns.runTurn();
    if (!turn) {
        co_return Ending::dismissed; // the program ends
    }
    begin(images.size());
    co_await tidyFoldersOf(m_parts.threads, images);
    const Ending ending = co_await captionAll(images, m_parts.clock.now());
    clearProgress();
    if (ending == Ending::dismissed) {
        m_parts.status.setLastMessage(
            interruptionMessage(m_tally.success(), m_tally.failed(), images.size() - m_begun));
    }
    if (ending != Ending::completed) {
        co_return ending;
    }
    m_parts.status.recordBatchFinished();
    m_parts.console.print(
        u"[MenuContentView] Manual selection completed: success=%1, failed=%2, permission errors=%3"_s
            .arg(m_tally.success())
            .arg(m_tally.failed())
            .arg(m_tally.permissionErrors()));
    m_parts.status.setLastMessage(m_tally.closingMessage());
    co_return Ending::completed;
}

void ManualSelectionRun::begin(qint64 imageCount) {
    StatusStore& status = m_parts.status;
    status.setIsProcessing(true);
    status.setTotalFiles(imageCount);
    status.setPending(imageCount);
    status.setCurrentFileIndex(0);
    status.setProcessed(0);
    status.setFailed(0);
    status.clearBatch();
    status.setLastMessage(u"Processing %1 selected image%2..."_s.arg(imageCount).arg(plural(imageCount)));
    status.beginTimedRun(imageCount);
}

QCoro::Task<ManualSelectionRun::Ending> ManualSelectionRun::captionAll(QStringList images, QDateTime begun) {
    constexpr qsizetype size = BatchRun::mostImages;
    m_parts.console.print(
        u"[MenuContentView] Processing %1 selected file(s) in %2 batch(es)"_s.arg(images.size())
            .arg((images.size() + size - 1) / size));
    for (qsizetype start = 0; start < images.size(); start += size) {
        if (!hasKey()) { // it was removed meanwhile: spare the images of this batch a failure
            co_return Ending::keyMissing;
        }
        const QStringList files = images.mid(start, size);
        const QList<AnalyzedFile> results = co_await m_parts.analyzer.analyzeFiles(files, start, begun);
        for (qsizetype index = 0; index < results.size(); ++index) {
            count(files.at(index), results.at(index));
        }
        if (m_tally.isKeyMissing()) {
            co_return Ending::keyMissing;
        }
        if (m_parts.turns.isClosed() && m_begun < images.size()) {
            co_return Ending::dismissed;
        }
    }
    co_return Ending::completed;
}

void ManualSelectionRun::count(const QString& image, const AnalyzedFile& result) {
    m_begun += result.isBegun ? 1 : 0;
    if (result.success) {
        m_tally.addSuccess();
    }
    if (!result.error) {
        return; // also one that was left alone for the caption that it has
    }
    const ImageFailure failure = classifyFailure(reasonOf(result), image);
    m_tally.addFailure(image, failure);
    if (failure.kind == ImageFailure::Kind::rateLimit) {
        m_parts.console.print(
            u"[Manual Selection] Failed to process %1: Rate limit exceeded"_s.arg(nameOf(image)));
    }
}

void ManualSelectionRun::clearProgress() {
    StatusStore& status = m_parts.status;
    status.setIsProcessing(false);
    status.setIsWaitingForAPI(false);
    status.setCurrentFileName(std::nullopt);
    status.setCurrentFileIndex(0);
    status.setTotalFiles(0);
    status.setPending(0);
    status.clearBatch();
}

QCoro::Task<> ManualSelectionRun::askForKey() {
    m_parts.status.setLastMessage(missingKeyMessage());
    const int button = co_await m_parts.alerts.show(missingKeyAlert());
    if (button == 0) {
        Q_EMIT m_parts.events.showSettingsWindow();
    }
}

QCoro::Task<> ManualSelectionRun::notify() {
    if (m_tally.success() > 0) {
        m_parts.console.print(u"[MenuContentView] Sending success notification..."_s);
        co_await m_parts.notifications.postProcessingResult(m_tally.success(), 0, {});
    }
    if (m_tally.permissionErrors() > 0) {
        co_await notifyPermissionErrors();
        co_await explainPermissions();
    } else if (m_tally.failed() > 0) {
        m_parts.console.print(u"[MenuContentView] Sending failure notification..."_s);
        co_await m_parts.notifications.postProcessingResult(0, m_tally.failed(), m_tally.failedNames(),
                                                            m_tally.hint());
    }
}

QCoro::Task<> ManualSelectionRun::notifyPermissionErrors() {
    m_parts.console.print(u"[MenuContentView] Sending critical failure notification..."_s);
    if (m_tally.mentionsRateLimit()) {
        co_await m_parts.notifications.postRateLimitFailure(m_tally.failed(), m_tally.failedNames(),
                                                            m_tally.errorDetail());
    } else {
        co_await m_parts.notifications.postPermissionFailure(m_tally.failed(), m_tally.failedNames(),
                                                             m_tally.errorDetail());
    }
}

QCoro::Task<> ManualSelectionRun::explainPermissions() {
    const int button = co_await m_parts.alerts.show(m_tally.permissionAlert());
    if (button == 0) {
        m_parts.workspace.openLink(privacySettings());
    } else if (button == 1) {
        Q_EMIT m_parts.events.showSettingsWindow();
    }
}

bool ManualSelectionRun::hasKey() const {
    return !apiKey(m_parts.defaults).isEmpty();
}

} // namespace ostrelle
