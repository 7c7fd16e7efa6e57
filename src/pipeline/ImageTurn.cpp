// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/ImageTurn.h"

#include "core/Attempt.h"
#include "metadata/facts/ImageKind.h"
#include "metadata/facts/OvertakenError.h"
#include "pipeline/AnalyzerError.h"
#include "pipeline/CaptionAcceptance.h"
#include "pipeline/ImageFailure.h"
#include "pipeline/SidecarCreation.h"

#include <QFileInfo>
#include <chrono>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// How long to wait for another program that captions an image, before the next look.
constexpr std::chrono::seconds claimPoll{1};

} // namespace

bool isDone(ImageTurn::Ending ending) {
    return ending == ImageTurn::Ending::captioned || ending == ImageTurn::Ending::skipped ||
           ending == ImageTurn::Ending::edited;
}

ImageTurn::ImageTurn(AnalyzerParts parts, ImageRequest request, Sender sender, std::function<void()> onBegin)
    : m_parts(parts)
    , m_request(std::move(request))
    , m_sender(sender)
    , m_onBegin(std::move(onBegin))
    , m_name(QFileInfo(m_request.file).fileName()) {
    m_report.file = m_request.file;
}

QCoro::Task<ImageTurn::Ending> ImageTurn::execute() {
    if (!co_await admit()) {
        co_return Ending::dismissed;
    }
    const Ending ending = co_await caption();
    if (ending == Ending::captioned && m_isAnswered) {
        co_await recordCaptioned(m_parts, m_claim);
    }
    // While the image is still claimed: another program's scan would take it for one that nobody has
    // captioned.
    if (m_sender == Sender::autoMode && isDone(ending)) {
        co_await attempt(m_parts.manifest.markProcessed(m_request.file, m_imageStamp));
    }
    co_return ending;
}

QCoro::Task<ImageTurn::Ending> ImageTurn::caption() {
    if (m_claim.isCaptionedSince(m_request.seenAt, m_parts.clock.now())) {
        skip(u"It was captioned by another run meanwhile."_s);
        co_return Ending::skipped;
    }
    auto run = std::make_unique<ImageRun>(m_parts, m_request);
    const Gate gate = co_await passGates(run.get());
    if (gate != Gate::open) {
        co_return gate == Gate::skipped ? Ending::skipped : Ending::refused;
    }
    m_hasBegun = true;
    m_onBegin();
    co_return co_await captionUntilSettled(std::move(run));
}

QCoro::Task<bool> ImageTurn::admit() {
    const quint64 dismissals = m_parts.turns.dismissals();
    bool isWaiting = false;
    while (m_parts.turns.dismissals() == dismissals) {
        m_turn = co_await m_parts.turns.imageTurn();
        if (!m_turn) {
            co_return false;
        }
        m_claim = co_await claimImage(m_parts, m_request.file);
        if (m_claim.isHeld()) {
            break;
        }
        m_turn.reset(); // for an image that can begin
        if (!std::exchange(isWaiting, true)) {
            m_parts.log.printAndAppend(
                u"[Analyzer] %1 is being captioned by another program, waiting for it"_s.arg(m_name));
        }
        co_await m_parts.clock.sleep(claimPoll);
    }
    co_return m_parts.turns.dismissals() == dismissals;
}

QCoro::Task<ImageTurn::Gate> ImageTurn::passGates(ImageRun* run) {
    if (!hasRoster()) {
        co_return refuse(u"No Code Replacements file is set."_s);
    }
    if (!isSupportedImage(m_request.file)) {
        co_return refuse(u"Files of this kind are not captioned."_s);
    }
    if (!co_await hasSidecar()) {
        co_return Gate::closed;
    }
    if (co_await hasCaption(run)) {
        co_return skip(u"It already has a caption."_s);
    }
    m_parts.log.printAndAppend(u"[Analyzer] Auto mode: processing "_s + m_name);
    co_return Gate::open;
}

bool ImageTurn::hasRoster() {
    if (m_sender == Sender::autoMode || m_parts.settings.codeReplacementsFile()) {
        return true;
    }
    m_parts.log.printAndAppend(
        u"[Analyzer] Auto mode: Skipping %1 - no code replacement file set"_s.arg(m_name));
    return false;
}

QCoro::Task<bool> ImageTurn::hasSidecar() {
    const auto created = co_await attempt(
        createSidecar(m_parts.threads, m_parts.access, m_parts.log.console(), m_request.file));
    if (!created) {
        m_parts.log.printAndAppend(
            u"[Analyzer] Auto mode: failed to create XMP sidecar for RAW file %1: %2"_s.arg(m_name,
                                                                                            created.words()));
        refuse(created.words());
    }
    co_return static_cast<bool>(created);
}

/// Whether there is a caption that stays. A scan that could not read the image leaves the judgement to this:
/// it leaves no real caption to be overwritten.
QCoro::Task<bool> ImageTurn::hasCaption(ImageRun* run) {
    const bool isUnseen = m_sender == Sender::autoMode && !m_request.facts;
    if (m_parts.settings.alwaysOverwriteCaptions() && !isUnseen) {
        co_return false;
    }
    const std::optional<QString> caption = co_await run->peekCaption();
    if (!isRealCaption(caption.value_or(QString()))) {
        co_return false;
    }
    m_parts.log.printAndAppend(
        u"[Analyzer] Auto mode: %1 already has caption, skipping (overwrite disabled)"_s.arg(m_name));
    co_return true;
}

ImageTurn::Gate ImageTurn::refuse(const QString& reason) {
    m_report.reason = reason;
    return Gate::closed;
}

ImageTurn::Gate ImageTurn::skip(const QString& reason) {
    m_report.outcome = ImageReport::Outcome::skipped;
    m_report.reason = reason;
    return Gate::skipped;
}

/// An image that somebody replaces while the model thinks is captioned anew, a few times at most.
QCoro::Task<ImageTurn::Ending> ImageTurn::captionUntilSettled(std::unique_ptr<ImageRun> run) {
    constexpr int mostAttempts = 3;
    for (int attempts = 1;; ++attempts) {
        const auto executed = co_await attempt(run->execute());
        m_report = run->report(); // what was found and spent up to a failure, too
        m_isAnswered = run->isAnswered();
        m_imageStamp = run->imageStamp();
        m_editConditions = run->editConditions();
        if (executed) {
            co_return Ending::captioned;
        }
        m_failure = executed.failure();
        m_report.reason = reportedWords(m_failure);
        const Ending ending = endingOf(*run);
        if (ending != Ending::changed || m_sender == Sender::autoMode || attempts == mostAttempts) {
            co_return ending == Ending::changed&& m_sender == Sender::user ? Ending::failed : ending;
        }
        run = std::make_unique<ImageRun>(m_parts,
                                         ImageRequest{.file = m_request.file, .seenAt = m_request.seenAt});
    }
}

/// Before the model is asked, auto mode's scan judges a caption that came along with other metadata: these
/// may be an ingest tool's preset, with a stub of a caption.
bool ImageTurn::isCaptionEdited(const OvertakenError& error) const {
    using Case = OvertakenError::Case;
    return error.kind() == Case::captionEdited ||
           (error.kind() == Case::captionAndFactsEdited && (m_sender == Sender::user || m_isAnswered));
}

ImageTurn::Ending ImageTurn::endingOf(const ImageRun& run) {
    if (const auto overtaken = failureAs<OvertakenError>(m_failure)) {
        m_parts.log.printAndAppend(
            u"[Analyzer] Nothing was written into %1: %2"_s.arg(m_name, m_report.reason));
        if (!isCaptionEdited(*overtaken)) {
            return Ending::changed;
        }
        m_report.outcome = ImageReport::Outcome::skipped;
        return Ending::edited;
    }
    const auto analyzerError = failureAs<AnalyzerError>(m_failure);
    if (analyzerError && analyzerError->code() == AnalyzerError::missingKey) {
        return Ending::keyMissing;
    }
    return run.isUnwritable() ? Ending::unwritable : Ending::failed;
}

} // namespace ostrelle
