// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/BatchRun.h"

#include "metadata/ImageMetadata.h"
#include "metadata/facts/OvertakenError.h"
#include "pipeline/CaptionWriting.h"
#include "pipeline/ImageFailure.h"
#include "pipeline/ImageGathering.h"
#include "pipeline/PromptBuilder.h"
#include "pipeline/PromptComposition.h"
#include "pipeline/TokenComparison.h"

#include <QFileInfo>
#include <QHash>
#include <chrono>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// The captions by the position of their image. If the model returned two for one image, the first counts:
/// the second more likely belongs to another image.
QHash<qsizetype, QString> captionsByPosition(const BatchCaptionReply& reply) {
    QHash<qsizetype, QString> captions;
    for (const BatchCaptionResult& result : reply.results) {
        if (!captions.contains(result.position)) {
            captions.insert(result.position, result.caption);
        }
    }
    return captions;
}

} // namespace

BatchRun::BatchRun(AnalyzerParts parts, QStringList files, BatchPlace place, ReadAhead* ahead,
                   OutcomeListener listener)
    : m_parts(parts), m_place(std::move(place)), m_ahead(ahead), m_listener(std::move(listener)) {
    for (const QString& file : std::as_const(files)) {
        m_outcomes.emplace_back().file = file;
    }
}

QCoro::Task<QList<ImageOutcome>> BatchRun::execute() {
    m_parts.progress.prepareBatch(m_place.startIndex, m_outcomes.size());
    co_await prepareAll();
    if (!m_parts.turns.isRunEnding()) {
        co_await captionPrepared();
    }
    co_return m_outcomes;
}

QCoro::Task<> BatchRun::captionPrepared() {
    if (m_prepared.size() == 1) {
        co_await captionSingle(m_prepared.first());
    } else if (m_prepared.size() > 1) {
        co_await captionTogether();
    }
    co_await captionReplaced();
}

QCoro::Task<> BatchRun::prepareAll() {
    QStringList files;
    for (const ImageOutcome& image : std::as_const(m_outcomes)) {
        files.append(image.file);
    }
    m_claims = (co_await claimImages(m_parts, files)).value_or(QList<HeldImage>());
    for (qsizetype index = 0; index < m_claims.size() && !m_parts.turns.isRunEnding(); ++index) {
        if (m_claims.at(index).isCaptionedSince(m_place.begun, m_parts.clock.now())) {
            skip(index, OutcomeKind::skipped, u"It was captioned by another program meanwhile."_s);
            continue;
        }
        m_parts.progress.prepareImage(m_place.startIndex + index, nameOf(index));
        co_await prepareOne(index, co_await m_ahead->take(m_place.startIndex + index));
    }
}

QCoro::Task<> BatchRun::prepareOne(qsizetype index, std::shared_ptr<const OpenedImage> ahead) {
    const auto image = co_await attempt(prepare(&m_outcomes[index], ahead));
    if (!image) {
        fail(index, u"[Analyzer] Failed to prepare %1: %2"_s.arg(nameOf(index), image.words()),
             reportedWords(image.failure()), image.failure(), Mention::byItself);
    } else if (*image) {
        m_prepared.append({.index = index, .image = **image});
    } else {
        skip(index, OutcomeKind::skipped, u"It already has a caption."_s);
    }
}

QCoro::Task<std::optional<PreparedImage>> BatchRun::prepare(ImageOutcome* image,
                                                            std::shared_ptr<const OpenedImage> ahead) {
    const QString file = image->file;
    ImageGathering gathering(m_parts, file, {}, std::move(ahead));
    const ScopedAccess fileAccess(m_parts.access, file);
    const ScopedAccess folderAccess(m_parts.access, QFileInfo(file).path());
    const ScopedAccess metadataAccess(m_parts.access, ImageMetadata(file).expectedPlace());
    co_await gathering.open();
    gathering.requireSidecar();
    co_await gathering.takeFacts();
    image->captionBefore = gathering.caption();
    if (gathering.isFinished()) {
        co_return std::nullopt;
    }
    gathering.logContext();
    gathering.logRights();
    gathering.requireEditable();
    co_await gathering.extractPreview();
    co_await gathering.gatherAudioNote();
    co_return gathering.image();
}

QCoro::Task<> BatchRun::captionTogether() {
    constexpr int maximumTokens = 2000;
    const RosterReading roster =
        co_await readRoster(m_parts.settings, m_parts.threads, m_parts.access, m_parts.log);
    takeWarnings(roster);
    if (roster.replacements.isTruncated()) {
        m_parts.log.print(truncationWarning(roster.replacements));
    }
    // The prompt and all images use the settings of the same moment.
    const QString prompt = buildBatchPrompt(promptQuery(m_parts.settings), roster.replacements);
    const QList<BatchImageItem> images = items();
    m_parts.progress.askForBatch(m_place.startIndex, images.size());
    const auto reply = co_await attempt(m_parts.openAI.generateBatchCaptions(
        images, prompt, captionModel, maximumTokens, captionTemperature));
    if (reply) {
        co_await writeReply(*reply);
        co_return;
    }
    m_parts.progress.stopAsking();
    m_parts.log.print(u"[Analyzer] Batch API failed (error: %1), falling back to individual processing"_s.arg(
        reply.words()));
    m_parts.log.appendToLog(u"[Analyzer] Batch API failed, falling back to individual processing: "_s +
                            reply.words());
    co_await captionOneByOne(roster);
}

QList<BatchImageItem> BatchRun::items() const {
    QList<BatchImageItem> items;
    for (const Prepared& prepared : m_prepared) {
        const CaptionFacts facts = captionFacts(prepared.image, m_parts.settings);
        items.append({.imageJPEGData = prepared.image.jpegData(),
                      .filename = nameOf(prepared.index),
                      .context = buildBatchContext(facts, m_parts.clock.timeZone())});
    }
    return items;
}

QCoro::Task<> BatchRun::writeReply(BatchCaptionReply reply) {
    m_parts.progress.writeBatch();
    if (reply.usage) {
        m_parts.usage.recordUsage(reply.usage->promptTokens, reply.usage->completionTokens);
        for (const QString& line : tokenComparison(*reply.usage, m_prepared.size())) {
            m_parts.log.print(line);
        }
    }
    const QHash<qsizetype, QString> captions = captionsByPosition(reply);
    for (qsizetype position = 0; position < m_prepared.size(); ++position) {
        const auto caption = captions.constFind(position);
        co_await writeFromReply(m_prepared.at(position),
                                caption == captions.constEnd() ? std::nullopt : std::optional(*caption));
        co_await pauseBetweenImages();
    }
}

QCoro::Task<> BatchRun::writeFromReply(Prepared prepared, std::optional<QString> caption) {
    const QString name = nameOf(prepared.index);
    m_parts.progress.takeUpImage(m_place.startIndex + prepared.index, name);
    if (!caption) {
        fail(prepared.index, u"[Analyzer] No caption returned for %1 in batch response"_s.arg(name),
             u"The model returned no caption for it."_s, nullptr, Mention::inBatch);
        co_return;
    }
    const auto written = co_await attempt(write(prepared, CaptionPath::batchReply, *caption));
    co_await end(prepared.index, written, u"[Analyzer] Failed to write caption for %1: %2"_s,
                 Mention::inBatch);
}

QCoro::Task<> BatchRun::captionOneByOne(RosterReading roster) {
    for (const Prepared& prepared : std::as_const(m_prepared)) {
        if (!co_await m_parts.turns.mayGoOn()) {
            co_return;
        }
        m_parts.progress.takeUpImage(m_place.startIndex + prepared.index, nameOf(prepared.index));
        const auto caption = co_await attempt(askAndWrite(prepared, roster));
        co_await end(prepared.index, caption, u"[Analyzer] Individual fallback failed for %1: %2"_s,
                     Mention::inBatch);
        co_await pauseBetweenImages();
    }
}

QCoro::Task<> BatchRun::captionSingle(Prepared prepared) {
    m_parts.progress.takeUpImage(m_place.startIndex + prepared.index, nameOf(prepared.index));
    const RosterReading roster = co_await readRoster(m_parts.settings, m_parts.threads, m_parts.access,
                                                     m_parts.log, RosterFailure::ignored);
    takeWarnings(roster);
    const auto caption = co_await attempt(askAndWrite(prepared, roster));
    co_await end(prepared.index, caption, u"[Analyzer] Failed to process single image %1: %2"_s,
                 Mention::byItself);
}

QCoro::Task<> BatchRun::captionReplaced() {
    constexpr int mostRounds = 2;
    for (int round = 0; round < mostRounds && !m_replaced.isEmpty(); ++round) {
        const QList<qsizetype> replaced = std::exchange(m_replaced, {});
        for (const qsizetype index : replaced) {
            if (m_parts.turns.isRunEnding()) {
                co_return;
            }
            m_prepared.clear();
            m_parts.progress.prepareImage(m_place.startIndex + index, nameOf(index));
            co_await prepareOne(index, nullptr);
            if (!m_prepared.isEmpty()) {
                co_await captionSingle(m_prepared.first());
            }
        }
    }
    for (const qsizetype index : std::exchange(m_replaced, {})) {
        fail(index, u"[Analyzer] %1 is changed again and again"_s.arg(nameOf(index)),
             u"Another program changes it again and again."_s, nullptr, Mention::byItself);
    }
}

QCoro::Task<QString> BatchRun::askAndWrite(Prepared prepared, RosterReading roster) {
    const QString prompt =
        co_await composeImagePrompt(m_parts.settings, m_parts.prompts, m_parts.log, m_parts.clock.timeZone(),
                                    prepared.image, roster.replacements);
    const CaptionReply reply =
        co_await askForCaption(m_parts.openAI, m_parts.usage, prepared.image.jpegData(), prompt);
    co_return co_await write(prepared, CaptionPath::oneOfBatch, reply.text);
}

QCoro::Task<QString> BatchRun::write(Prepared prepared, CaptionPath path, QString reply) {
    // On neither path of a batch does an image keep its caption, so this always has a value.
    const QString caption =
        acceptReply(path, reply, prepared.image, m_parts.settings, m_parts.log).value_or(reply);
    co_await writeCaption(m_parts, path, prepared.image, caption);
    co_await recordCaptioned(m_claims.at(prepared.index), m_parts.clock.now());
    co_return caption;
}

void BatchRun::takeWarnings(const RosterReading& roster) {
    for (const Prepared& prepared : std::as_const(m_prepared)) {
        m_outcomes[prepared.index].warnings = roster.warnings;
    }
}

/// Gives the window time to show each image.
QCoro::Task<> BatchRun::pauseBetweenImages() {
    constexpr std::chrono::milliseconds pause{20};
    co_await m_parts.clock.sleep(pause);
}

/// Skipped images are in no counter.
void BatchRun::skip(qsizetype index, OutcomeKind kind, const QString& reason) {
    ImageOutcome& image = m_outcomes[index];
    image.kind = kind;
    image.reason = reason;
    m_listener(image);
}

QCoro::Task<> BatchRun::end(qsizetype index, Attempt<QString> caption, QString logLine, Mention mention) {
    if (caption) {
        succeed(index, *caption, mention);
        co_return;
    }
    const QString reason = reportedWords(caption.failure());
    const auto overtaken = caption.failureAs<OvertakenError>();
    if (!overtaken) {
        fail(index, logLine.arg(nameOf(index), caption.words()), reason, caption.failure(), mention);
        co_return;
    }
    m_parts.log.printAndAppend(u"[Analyzer] Nothing was written into %1: %2"_s.arg(nameOf(index), reason));
    using Case = OvertakenError::Case;
    if (overtaken->kind() == Case::captionEdited || overtaken->kind() == Case::captionAndFactsEdited) {
        co_await m_parts.manifest.markProcessed(m_outcomes.at(index).file); // it needs no further attempt
        skip(index, OutcomeKind::edited, reason);
    } else {
        m_replaced.append(index);
    }
}

void BatchRun::succeed(qsizetype index, const QString& caption, Mention mention) {
    m_parts.progress.countCaptioned(nameOf(index), mention);
    ImageOutcome& image = m_outcomes[index];
    image.kind = OutcomeKind::captioned;
    image.captionAfter = caption;
    m_listener(image);
}

void BatchRun::fail(qsizetype index, const QString& logLine, const QString& reason, std::exception_ptr cause,
                    Mention mention) {
    m_parts.log.printAndAppend(logLine);
    m_parts.progress.countFailed(nameOf(index), mention);
    ImageOutcome& image = m_outcomes[index];
    image.kind = OutcomeKind::failed;
    image.reason = reason;
    image.cause = std::move(cause);
    m_listener(image);
}

QString BatchRun::nameOf(qsizetype index) const {
    return QFileInfo(m_outcomes.at(index).file).fileName();
}

} // namespace ostrelle
