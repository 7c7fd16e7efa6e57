// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/Analyzer.h"

#include "pipeline/CaptionRun.h"
#include "pipeline/ImageRun.h"
#include "pipeline/ImageTurn.h"
#include "pipeline/MissingKey.h"
#include "product/ApiKey.h"

#include <QFileInfo>
#include <exception>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

Analyzer::Analyzer(AnalyzerParts parts) : m_parts(parts) {}

QCoro::Task<bool> Analyzer::analyzeSingle(QString file, std::optional<QDateTime> begun) {
    const ImageOutcome image =
        co_await captionInTurn({.file = file, .seenAt = begun.value_or(m_parts.clock.now())});
    co_return isDone(image.kind);
}

QCoro::Task<ImageOutcome> Analyzer::captionWatched(ImageRequest request) {
    request.sender = ImageRequest::Sender::autoMode;
    return captionInTurn(request);
}

QCoro::Task<ImageOutcome> Analyzer::captionDownloaded(QString file) {
    return captionInTurn(
        {.file = file, .seenAt = m_parts.clock.now(), .sender = ImageRequest::Sender::server});
}

QCoro::Task<ImageOutcome> Analyzer::captionInTurn(ImageRequest request) {
    ImageOutcome image;
    {
        ImageTurn turn(m_parts, request);
        image = co_await turn.execute();
        if (image.kind == OutcomeKind::failed || image.kind == OutcomeKind::unwritable) {
            countFailure(image);
        } else if (image.kind == OutcomeKind::captioned || image.kind == OutcomeKind::unchanged) {
            m_refusals.succeeded();
            m_refusal.reset();
        }
    }
    // Auto mode tries a changed image again, so its outcome is not final.
    const bool isLater =
        image.kind == OutcomeKind::changed && request.sender == ImageRequest::Sender::autoMode;
    if (image.kind != OutcomeKind::notBegun && !isLater) {
        Q_EMIT imageFinished(image);
    }
    co_await follow(image);
    co_return image;
}

void Analyzer::countFailure(ImageOutcome& image) {
    const QString name = QFileInfo(image.file).fileName();
    m_refusal = m_refusals.failed(name, image.cause, apiKey(m_parts.defaults));
    if (m_refusal) {
        m_parts.progress.showMessage(m_refusal->words);
        image.warnings.append(m_refusal->words);
    }
    m_parts.log.printAndAppend(u"[Analyzer] Auto mode failed %1: %2"_s.arg(name, image.reason));
}

QCoro::Task<> Analyzer::follow(ImageOutcome image) {
    if (image.kind == OutcomeKind::keyMissing) {
        co_await stopForKey();
    } else if (m_refusal && image.kind == OutcomeKind::failed && m_refusals.takeIsNew()) {
        co_await notifyOfRefusals();
    }
}

QCoro::Task<> Analyzer::notifyOfRefusals() {
    const ServiceRefusals::Cause cause = *m_refusal;
    const QStringList names = m_refusals.names();
    if (cause.isRateLimit) {
        co_await m_parts.notifications.postRateLimitFailure(names.size(), names, cause.words);
    } else {
        co_await m_parts.notifications.postProcessingResult(0, names.size(), names, cause.words);
    }
}

/// All images of a scan miss the key at the same time, but the user is asked only once.
QCoro::Task<> Analyzer::stopForKey() {
    m_parts.settings.setAutoMode(false);
    if (std::exchange(m_isAskingForKey, true)) {
        co_return;
    }
    co_await askForKey(missingKeyAlert(), m_parts.alerts, m_parts.events, m_parts.progress);
    m_isAskingForKey = false;
}

QCoro::Task<ImageOutcome> Analyzer::analyzeImage(QString file) {
    ImageRun run(m_parts, {.file = file, .seenAt = m_parts.clock.now()});
    const ImageOutcome image = co_await run.execute();
    if (image.cause) {
        std::rethrow_exception(image.cause);
    }
    co_return image;
}

QCoro::Task<QString> Analyzer::promptFor(QString file) {
    ImageRun run(m_parts, {.file = file, .seenAt = m_parts.clock.now()}, {.makesSidecar = false});
    co_return co_await run.composePrompt();
}

QCoro::Task<RunTally> Analyzer::recaptionFolder(FolderImages which) {
    FolderSource folder(m_parts, which);
    CaptionRun run(m_parts, announcer());
    co_return co_await run.execute(&folder);
}

QCoro::Task<RunTally> Analyzer::captionSelection(QStringList files, HeldAccess access, Workspace& workspace) {
    SelectionSource selection(m_parts, workspace, files, std::move(access));
    CaptionRun run(m_parts, announcer());
    co_return co_await run.execute(&selection);
}

OutcomeListener Analyzer::announcer() {
    return [this](const ImageOutcome& image) { Q_EMIT imageFinished(image); };
}

} // namespace ostrelle
