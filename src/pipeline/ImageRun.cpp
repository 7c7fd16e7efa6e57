// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/ImageRun.h"

#include "core/Attempt.h"
#include "core/Text.h"
#include "pipeline/AnalyzerError.h"
#include "pipeline/CaptionWriting.h"
#include "pipeline/ImageFailure.h"
#include "pipeline/PromptComposition.h"
#include "product/ApiKey.h"

#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

ImageRun::ImageRun(AnalyzerParts parts, ImageRequest request, Opening opening)
    : m_parts(parts), m_request(std::move(request)), m_gathering(parts, m_request.file, opening) {
    m_outcome.file = m_request.file;
}

QCoro::Task<QString> ImageRun::openImage() {
    co_await m_gathering.open();
    co_return m_gathering.sidecarFailure();
}

QCoro::Task<ImageOutcome> ImageRun::execute() {
    const auto done = co_await attempt(caption());
    if (!done) {
        fail(done.failure());
    }
    if (!m_outcome.imageStamp) {
        m_outcome.imageStamp = m_gathering.imageStamp();
    }
    m_outcome.editConditions = m_gathering.editConditions();
    co_return m_outcome;
}

QCoro::Task<> ImageRun::caption() {
    requireKey();
    co_await m_gathering.open();
    m_gathering.requireSidecar();
    co_await m_gathering.takeFacts();
    m_outcome.captionBefore = m_gathering.caption();
    requireUnchanged();
    if (m_gathering.isFinished()) {
        m_outcome.kind = OutcomeKind::skipped;
        m_outcome.reason = u"It already has a caption."_s;
        co_return;
    }
    m_gathering.logContext();
    m_gathering.logSidecar();
    m_gathering.logRights();
    requireEditable();
    const RosterReading roster = co_await readItsRoster();
    m_outcome.warnings = roster.warnings;
    co_await m_gathering.extractPreview();
    co_await savePreview();
    co_await m_gathering.gatherAudioNote();
    const QString prompt = co_await composePromptWith(roster.replacements);
    logRequest(prompt, roster.replacements);
    const QString reply = co_await askModel(prompt);
    const auto accepted =
        acceptReply(CaptionPath::singleImage, reply, m_gathering.image(), m_parts.settings, m_parts.log);
    if (!accepted) {
        m_outcome.kind = OutcomeKind::unchanged;
        m_outcome.reason = u"The model returned the existing caption unchanged."_s;
        co_return;
    }
    co_await write(*accepted);
}

QCoro::Task<QString> ImageRun::composePrompt() {
    co_await m_gathering.open();
    co_await m_gathering.takeFacts();
    m_gathering.logContext();
    m_gathering.logRights();
    const RosterReading roster = co_await readItsRoster();
    co_return co_await composePromptWith(roster.replacements);
}

void ImageRun::requireKey() const {
    if (apiKey(m_parts.defaults).isEmpty()) {
        throw AnalyzerError(AnalyzerError::missingKey,
                            u"Please enter your OpenAI API key in Settings to continue captioning images."_s);
    }
}

/// Unchanged since the scan, that is. A JPEG that is now another file may have another picture or caption;
/// the next scan looks at it again.
void ImageRun::requireUnchanged() const {
    if (m_request.image && m_gathering.imageStamp() != m_request.image) {
        throw OvertakenError(OvertakenError::Case::pictureReplaced);
    }
    if (m_request.facts) {
        requireSameFacts(m_gathering.facts(), *m_request.facts);
    }
}

void ImageRun::requireEditable() {
    try {
        m_gathering.requireEditable();
    } catch (...) {
        m_isUnwritable = true;
        throw;
    }
}

/// A copy to look at later; the run goes on without it.
QCoro::Task<> ImageRun::savePreview() {
    auto save = [previews = m_parts.previews, jpeg = m_gathering.image().jpegData(), file = m_request.file] {
        previews.save(jpeg, file);
        return previews.path(file);
    };
    const auto path = co_await attemptOffMainThread(save);
    if (path) {
        m_outcome.previewPath = *path;
        m_parts.log.print(u"[Analyzer] Saved preview to: "_s + *path);
    }
}

QCoro::Task<RosterReading> ImageRun::readItsRoster() {
    return readRoster(m_parts.settings, m_parts.threads, m_parts.access, m_parts.log);
}

QCoro::Task<QString> ImageRun::composePromptWith(CodeReplacements roster) {
    return composeImagePrompt(m_parts.settings, m_parts.prompts, m_parts.log, m_parts.clock.timeZone(),
                              m_gathering.image(), std::move(roster));
}

void ImageRun::logRequest(const QString& prompt, const CodeReplacements& roster) {
    constexpr qsizetype headCharacters = 1200;
    constexpr qsizetype tailCharacters = 500;
    AnalyzerLog& log = m_parts.log;
    const PreparedImage& image = m_gathering.image();
    const std::optional<QString>& creator = m_gathering.facts().creator;
    log.appendToLog(contextIsEmpty(image.context())
                        ? u"[Analyzer] Context present: NO"_s
                        : u"[Analyzer] Context present: YES — "_s + contextDescription(image.context()));
    for (const QString& line : logLines(roster)) {
        log.appendToLog(line);
    }
    log.appendToLog(creator ? u"[Analyzer] XMP creator present: YES — "_s + *creator
                            : u"[Analyzer] XMP creator present: NO"_s);
    if (const std::optional<QString>& rights = image.rights()) {
        log.appendToLog(u"[Analyzer] XMP rights present: YES"_s);
        log.appendToLog(u"[Analyzer] XMP rights FULL VALUE: \"%1\""_s.arg(*rights));
        log.printAndAppend(u"[Analyzer] XMP rights will appear in Context as: Rights: "_s + *rights);
    } else {
        log.appendToLog(u"[Analyzer] XMP rights present: NO"_s);
    }
    log.appendToLog(u"[Analyzer] FULL PROMPT LENGTH: %1 characters"_s.arg(characterCount(prompt)));
    const QString head = firstCharacters(prompt, headCharacters);
    log.appendToLog(
        u"[Analyzer] Prompt head (first %1 chars):\n%2"_s.arg(QString::number(characterCount(head)), head));
    const QString tail = lastCharacters(prompt, tailCharacters);
    log.print(u"[Analyzer] Prompt tail (last 500 chars) showing Rights instruction:\n"_s + tail);
    log.appendToLog(u"[Analyzer] Prompt tail (last 500 chars):\n"_s + tail);
}

QCoro::Task<QString> ImageRun::askModel(QString prompt) {
    const auto reply = co_await attempt(
        askForCaption(m_parts.openAI, m_parts.usage, m_gathering.image().jpegData(), prompt));
    if (!reply) {
        m_parts.log.printAndAppend(
            u"[Analyzer] OpenAI generateCaption failed for %1: %2"_s.arg(m_gathering.name(), reply.words()));
        reply.rethrow();
    }
    if (reply->usage) {
        m_outcome.cost = UsageTracker::costOf(reply->usage->promptTokens, reply->usage->completionTokens);
    }
    m_isAnswered = true;
    co_return reply->text;
}

QCoro::Task<> ImageRun::write(QString caption) {
    const auto written =
        co_await attempt(writeCaption(m_parts, CaptionPath::singleImage, m_gathering.image(), caption));
    if (!written) {
        m_isUnwritable = true; // another attempt would cost money and fail again
        written.rethrow();
    }
    m_outcome.kind = OutcomeKind::captioned;
    m_outcome.captionAfter = caption;
    m_outcome.imageStamp = written->image;
}

void ImageRun::fail(const std::exception_ptr& failure) {
    m_outcome.cause = failure;
    m_outcome.reason = reportedWords(failure);
    m_outcome.kind = kindOf(failure);
    if (failureAs<OvertakenError>(failure)) {
        m_parts.log.printAndAppend(
            u"[Analyzer] Nothing was written into %1: %2"_s.arg(m_gathering.name(), m_outcome.reason));
    }
}

OutcomeKind ImageRun::kindOf(const std::exception_ptr& failure) const {
    if (const auto overtaken = failureAs<OvertakenError>(failure)) {
        return isCaptionEdited(*overtaken) ? OutcomeKind::edited : OutcomeKind::changed;
    }
    const auto analyzerError = failureAs<AnalyzerError>(failure);
    if (analyzerError && analyzerError->code() == AnalyzerError::missingKey) {
        return OutcomeKind::keyMissing;
    }
    return m_isUnwritable ? OutcomeKind::unwritable : OutcomeKind::failed;
}

/// If a caption and other facts have changed before the model is asked, auto mode leaves it to the next scan
/// to judge that caption: it may be the stub of an ingest tool's preset.
bool ImageRun::isCaptionEdited(const OvertakenError& error) const {
    using Case = OvertakenError::Case;
    const bool isUsers = m_request.sender != ImageRequest::Sender::autoMode;
    return error.kind() == Case::captionEdited ||
           (error.kind() == Case::captionAndFactsEdited && (isUsers || m_isAnswered));
}

} // namespace ostrelle
