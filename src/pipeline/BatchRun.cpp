// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/BatchRun.h"

#include "core/Attempt.h"
#include "metadata/facts/OvertakenError.h"
#include "metadata/sidecar/SidecarPath.h"
#include "pipeline/CaptionAcceptance.h"
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
using Telling = BatchProgress::Telling;

namespace {

/// Leaves the window the time to show each image.
constexpr std::chrono::milliseconds breath{20};

/// The captions by the place of their image. The first counts where the model gave two for one image: the
/// second is more likely another image's.
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

BatchRun::BatchRun(AnalyzerParts parts, QStringList files, qint64 startIndex, QDateTime begun,
                   ImageListener listener)
    : m_parts(parts)
    , m_begun(std::move(begun))
    , m_listener(std::move(listener))
    , m_progress(parts.status, startIndex) {
    for (const QString& file : std::as_const(files)) {
        m_outcome.results.append({.name = QFileInfo(file).fileName()});
        m_reports.emplace_back().file = file;
    }
}

QCoro::Task<BatchOutcome> BatchRun::execute() {
    m_progress.preparing(m_reports.size());
    co_await prepareAll();
    if (!m_parts.turns.isClosed()) { // as it is when the program ends
        co_await captionPrepared();
    }
    co_return m_outcome;
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
    for (const ImageReport& report : std::as_const(m_reports)) {
        files.append(report.file);
    }
    m_claims = (co_await claimImages(m_parts, files)).value_or(QList<HeldImage>());
    for (qsizetype index = 0; index < m_claims.size() && !m_parts.turns.isClosed(); ++index) {
        if (m_claims.at(index).isCaptionedSince(m_begun, m_parts.clock.now())) {
            skip(index, u"It was captioned by another program meanwhile."_s);
        } else {
            co_await prepareOne(index);
        }
    }
}

QCoro::Task<> BatchRun::prepareOne(qsizetype index) {
    m_progress.uploading(index, nameOf(index));
    const auto image = co_await attempt(prepare(m_reports.at(index).file, &m_reports[index]));
    if (!image) {
        fail(index, u"[Analyzer] Failed to prepare %1: %2"_s.arg(nameOf(index), image.words()),
             failureOf(image), Telling::byItself);
    } else if (*image) {
        m_prepared.append({.index = index, .image = **image});
    } else {
        skip(index, u"It already has a caption."_s);
    }
}

QCoro::Task<std::optional<PreparedImage>> BatchRun::prepare(QString file, ImageReport* report) {
    ImageGathering gathering(m_parts, file);
    const ScopedAccess fileAccess(m_parts.access, file);
    const ScopedAccess folderAccess(m_parts.access, QFileInfo(file).path());
    std::optional<ScopedAccess> sidecarAccess;
    if (!gathering.metadata().isEmbedded()) {
        sidecarAccess.emplace(m_parts.access, sidecarPath(file));
    }
    co_await gathering.ensureSidecar();
    co_await gathering.readCaption();
    report->captionBefore = gathering.caption();
    if (gathering.isFinished()) {
        co_return std::nullopt;
    }
    gathering.sayContext();
    gathering.sayRights();
    co_await gathering.requireEditable();
    co_await gathering.extractPreview();
    co_await gathering.gatherAudioNote();
    co_return gathering.image();
}

QCoro::Task<> BatchRun::captionTogether() {
    constexpr int maximumTokens = 2000;
    const RosterReading roster = co_await readRoster(m_parts);
    takeWarnings(roster);
    if (roster.replacements.isTruncated()) {
        m_parts.log.print(truncationWarning(roster.replacements));
    }
    // Prompt and images from the settings of one moment.
    const QString prompt = buildBatchPrompt(promptQuery(m_parts.settings), roster.replacements);
    const QList<BatchImageItem> images = items();
    m_progress.asking(images.size());
    const auto reply = co_await attempt(m_parts.openAI.generateBatchCaptions(
        images, prompt, captionModel, maximumTokens, captionTemperature));
    if (reply) {
        co_await writeReply(*reply);
        co_return;
    }
    m_progress.noLongerAsking();
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
    m_progress.writing();
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
        co_await m_parts.clock.sleep(breath);
    }
}

QCoro::Task<> BatchRun::writeFromReply(Prepared prepared, std::optional<QString> caption) {
    m_progress.working(prepared.index, nameOf(prepared.index));
    if (!caption) {
        fail(prepared.index,
             u"[Analyzer] No caption returned for %1 in batch response"_s.arg(nameOf(prepared.index)),
             {.words = u"The model returned no caption for it."_s}, Telling::inBatch);
        co_return;
    }
    const auto written = co_await attempt(write(prepared, *caption));
    if (written) {
        succeed(prepared.index, *caption, Telling::inBatch);
    } else {
        co_await endWithout(
            prepared.index,
            u"[Analyzer] Failed to write caption for %1: %2"_s.arg(nameOf(prepared.index), written.words()),
            failureOf(written), Telling::inBatch);
    }
}

QCoro::Task<> BatchRun::captionOneByOne(RosterReading roster) {
    for (const Prepared& prepared : std::as_const(m_prepared)) {
        if (m_parts.turns.isClosed()) {
            co_return;
        }
        m_progress.working(prepared.index, nameOf(prepared.index));
        const auto caption = co_await attempt(askAndWrite(prepared, roster));
        if (caption) {
            succeed(prepared.index, *caption, Telling::inBatch);
        } else {
            co_await endWithout(prepared.index,
                                u"[Analyzer] Individual fallback failed for %1: %2"_s.arg(
                                    nameOf(prepared.index), caption.words()),
                                failureOf(caption), Telling::inBatch);
        }
        co_await m_parts.clock.sleep(breath);
    }
}

QCoro::Task<> BatchRun::captionSingle(Prepared prepared) {
    m_progress.working(prepared.index, nameOf(prepared.index));
    const RosterReading roster = co_await readRoster(m_parts, RosterFailure::ignored);
    takeWarnings(roster);
    const auto caption = co_await attempt(askAndWrite(prepared, roster));
    if (caption) {
        succeed(prepared.index, *caption, Telling::byItself);
    } else {
        co_await endWithout(prepared.index,
                            u"[Analyzer] Failed to process single image %1: %2"_s.arg(nameOf(prepared.index),
                                                                                      caption.words()),
                            failureOf(caption), Telling::byItself);
    }
}

QCoro::Task<> BatchRun::captionReplaced() {
    constexpr int mostRounds = 2;
    for (int round = 0; round < mostRounds && !m_replaced.isEmpty(); ++round) {
        const QList<qsizetype> replaced = std::exchange(m_replaced, {});
        for (const qsizetype index : replaced) {
            if (m_parts.turns.isClosed()) {
                co_return;
            }
            m_prepared.clear();
            co_await prepareOne(index);
            if (!m_prepared.isEmpty()) {
                co_await captionSingle(m_prepared.first());
            }
        }
    }
    for (const qsizetype index : std::exchange(m_replaced, {})) {
        fail(index, u"[Analyzer] %1 is changed again and again"_s.arg(nameOf(index)),
             {.words = u"Another program changes it again and again."_s}, Telling::byItself);
    }
}

QCoro::Task<QString> BatchRun::askAndWrite(Prepared prepared, RosterReading roster) {
    const QString prompt = co_await composeImagePrompt(m_parts, prepared.image, roster.replacements);
    const CaptionReply reply = co_await askForCaption(m_parts, prepared.image.jpegData(), prompt);
    const QString caption = finalizeCaption(reply.text, prepared.image.rights(), m_parts.settings);
    co_await write(prepared, caption);
    co_return caption;
}

QCoro::Task<> BatchRun::write(Prepared prepared, QString caption) {
    const QString& file = prepared.image.file;
    const ScopedAccess fileAccess(m_parts.access, file);
    const ScopedAccess folderAccess(m_parts.access, QFileInfo(file).path());
    const std::optional<FileStamp> written = co_await writeCaption(m_parts, prepared.image, caption);
    co_await m_parts.manifest.markProcessed(file, written);
    co_await recordCaptioned(m_parts, m_claims.at(prepared.index));
}

void BatchRun::takeWarnings(const RosterReading& roster) {
    for (const Prepared& prepared : std::as_const(m_prepared)) {
        m_reports[prepared.index].warnings = roster.warnings;
    }
}

/// Left out of all counters.
void BatchRun::skip(qsizetype index, const QString& reason) {
    ImageReport& report = m_reports[index];
    report.outcome = ImageReport::Outcome::skipped;
    report.reason = reason;
    this->report(index);
}

void BatchRun::succeed(qsizetype index, const QString& caption, Telling telling) {
    m_outcome.results[index].success = true;
    m_progress.succeeded(nameOf(index), telling);
    ImageReport& report = m_reports[index];
    report.outcome = ImageReport::Outcome::captioned;
    report.captionAfter = caption;
    this->report(index);
}

BatchRun::Failure BatchRun::failureOf(const auto& attempt) {
    return {.words = reportedWords(attempt.failure()), .cause = attempt.failure()};
}

QCoro::Task<> BatchRun::endWithout(qsizetype index, QString logLine, Failure failure, Telling telling) {
    const auto overtaken = failureAs<OvertakenError>(failure.cause);
    if (!overtaken) {
        fail(index, logLine, failure, telling);
        co_return;
    }
    m_parts.log.printAndAppend(
        u"[Analyzer] Nothing was written into %1: %2"_s.arg(nameOf(index), failure.words));
    using Case = OvertakenError::Case;
    if (overtaken->kind() == Case::captionEdited || overtaken->kind() == Case::captionAndFactsEdited) {
        co_await m_parts.manifest.markProcessed(m_reports.at(index).file); // it needs no further attempt
        skip(index, failure.words);
    } else {
        m_replaced.append(index);
    }
}

void BatchRun::fail(qsizetype index, const QString& logLine, const Failure& failure, Telling telling) {
    m_parts.log.printAndAppend(logLine);
    m_outcome.failedNames.append(nameOf(index));
    m_progress.failed(nameOf(index), telling);
    m_outcome.results[index].failed = true;
    m_outcome.results[index].cause = failure.cause;
    m_reports[index].reason = failure.words;
    report(index);
}

void BatchRun::report(qsizetype index) {
    m_outcome.results[index].isBegun = true;
    m_listener(m_reports.at(index));
}

} // namespace ostrelle
