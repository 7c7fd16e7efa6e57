// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/ImageTurn.h"

#include "core/Attempt.h"
#include "metadata/facts/ImageKind.h"
#include "pipeline/CaptionAcceptance.h"

#include <QFileInfo>
#include <chrono>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;
using Sender = ImageRequest::Sender;

namespace {

/// How often to try again while another program captions an image.
constexpr std::chrono::seconds claimPoll{1};

} // namespace

ImageTurn::ImageTurn(AnalyzerParts parts, ImageRequest request)
    : m_parts(parts), m_request(std::move(request)), m_name(QFileInfo(m_request.file).fileName()) {}

QCoro::Task<ImageOutcome> ImageTurn::execute() {
    if (!co_await admit()) {
        co_return outcome(OutcomeKind::notBegun);
    }
    const ImageOutcome ended = co_await caption();
    if (ended.kind == OutcomeKind::captioned || ended.kind == OutcomeKind::unchanged) {
        co_await recordCaptioned(m_claim, m_parts.clock.now());
    }
    // While the image is still claimed: otherwise another program's scan could caption it again.
    if (m_request.sender != Sender::user && isDone(ended.kind)) {
        co_await attempt(m_parts.manifest.markProcessed(m_request.file, ended.imageStamp));
    }
    co_return ended;
}

QCoro::Task<ImageOutcome> ImageTurn::caption() {
    if (m_claim.isCaptionedSince(m_request.seenAt, m_parts.clock.now())) {
        co_return outcome(OutcomeKind::skipped, u"It was captioned by another run meanwhile."_s);
    }
    auto run = std::make_unique<ImageRun>(m_parts, m_request);
    if (const std::optional<ImageOutcome> stopped = co_await stopAtGate(run.get())) {
        co_return *stopped;
    }
    m_parts.log.printAndAppend(u"[Analyzer] Auto mode: processing "_s + m_name);
    m_parts.progress.beginImage(m_name);
    const ImageOutcome ended = co_await captionUntilSettled(std::move(run));
    m_parts.progress.endImage(ended);
    co_return ended;
}

QCoro::Task<bool> ImageTurn::admit() {
    const Overtaking::Mark mark = m_parts.turns.imageMark();
    bool isWaiting = false;
    while (!mark.isOvertaken()) {
        m_turn = co_await m_parts.turns.imageTurn();
        if (!m_turn) {
            co_return false;
        }
        m_claim = co_await claimImage(m_parts.claims, m_parts.threads, m_parts.log, m_request.file);
        if (m_claim.isHeld()) {
            break;
        }
        m_turn.reset(); // another image may use it
        if (!std::exchange(isWaiting, true)) {
            m_parts.log.printAndAppend(
                u"[Analyzer] %1 is being captioned by another program, waiting for it"_s.arg(m_name));
        }
        co_await m_parts.clock.sleep(claimPoll);
    }
    co_return !mark.isOvertaken();
}

QCoro::Task<std::optional<ImageOutcome>> ImageTurn::stopAtGate(ImageRun* run) {
    if (!hasRoster()) {
        co_return outcome(OutcomeKind::refused, u"No Code Replacements file is set."_s);
    }
    if (!isSupportedImage(m_request.file)) {
        co_return outcome(OutcomeKind::refused, u"Files of this kind are not captioned."_s);
    }
    const QString sidecarFailure = co_await run->openImage();
    if (!sidecarFailure.isEmpty()) {
        m_parts.log.printAndAppend(
            u"[Analyzer] Auto mode: failed to create XMP sidecar for RAW file %1: %2"_s.arg(m_name,
                                                                                            sidecarFailure));
        co_return outcome(OutcomeKind::refused, sidecarFailure);
    }
    if (hasCaption(*run)) {
        co_return outcome(OutcomeKind::skipped, u"It already has a caption."_s);
    }
    co_return std::nullopt;
}

bool ImageTurn::hasRoster() {
    if (m_request.sender == Sender::autoMode || m_parts.settings.codeReplacementsFile()) {
        return true;
    }
    m_parts.log.printAndAppend(
        u"[Analyzer] Auto mode: Skipping %1 - no code replacement file set"_s.arg(m_name));
    return false;
}

/// Whether the image keeps its caption. If auto mode's scan could not read it, a real caption is never
/// overwritten, whatever the settings: the scan would have left it alone.
bool ImageTurn::hasCaption(const ImageRun& run) {
    const bool isUnseen = m_request.sender == Sender::autoMode && !m_request.facts;
    if (m_parts.settings.alwaysOverwriteCaptions() && !isUnseen) {
        return false;
    }
    if (!isRealCaption(run.readCaption().value_or(QString()))) {
        return false;
    }
    m_parts.log.printAndAppend(
        u"[Analyzer] Auto mode: %1 already has caption, skipping (overwrite disabled)"_s.arg(m_name));
    return true;
}

ImageOutcome ImageTurn::outcome(OutcomeKind kind, const QString& reason) const {
    ImageOutcome ended;
    ended.file = m_request.file;
    ended.kind = kind;
    ended.reason = reason;
    return ended;
}

/// An image that another program changes while the model is working is captioned again, a few times at most;
/// auto mode leaves that to its next scan.
QCoro::Task<ImageOutcome> ImageTurn::captionUntilSettled(std::unique_ptr<ImageRun> run) {
    constexpr int mostAttempts = 3;
    for (int attempts = 1;; ++attempts) {
        ImageOutcome ended = co_await run->execute();
        if (ended.kind != OutcomeKind::changed || m_request.sender == Sender::autoMode) {
            co_return ended;
        }
        if (attempts == mostAttempts) {
            ended.kind = OutcomeKind::failed;
            co_return ended;
        }
        run = std::make_unique<ImageRun>(m_parts,
                                         ImageRequest{.file = m_request.file, .seenAt = m_request.seenAt});
    }
}

} // namespace ostrelle
