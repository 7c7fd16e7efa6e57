// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/BatchRun.h"

#include "core/Attempt.h"
#include "pipeline/CaptionAcceptance.h"
#include "pipeline/CodeReplacementsReading.h"
#include "pipeline/ImageGathering.h"
#include "pipeline/PromptBuilder.h"
#include "pipeline/PromptComposition.h"
#include "pipeline/TokenComparison.h"

#include <QFileInfo>
#include <QHash>
#include <chrono>

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

BatchRun::BatchRun(AnalyzerParts parts, QStringList files, qint64 startIndex, ImageListener listener)
    : m_parts(parts), m_listener(std::move(listener)), m_progress(parts.status, startIndex) {
    for (const QString& file : std::as_const(files)) {
        m_outcome.results.append({.name = QFileInfo(file).fileName()});
        m_reports.emplace_back().file = file;
    }
}

QCoro::Task<BatchOutcome> BatchRun::execute() {
    m_progress.preparing(m_reports.size());
    co_await prepareAll();
    if (m_parts.turns.isClosed()) {
        co_return m_outcome; // the program ends
    }
    if (m_prepared.size() == 1) {
        co_await captionSingle(m_prepared.first());
    } else if (m_prepared.size() > 1) {
        co_await captionTogether();
    }
    co_return m_outcome;
}

QCoro::Task<> BatchRun::prepareAll() {
    for (qsizetype index = 0; index < m_reports.size() && !m_parts.turns.isClosed(); ++index) {
        m_progress.uploading(index, nameOf(index));
        const auto image = co_await attempt(prepare(m_reports.at(index).file, &m_reports[index]));
        if (!image) {
            fail(index, u"[Analyzer] Failed to prepare %1: %2"_s.arg(nameOf(index), image.words()),
                 failureOf(image), Telling::byItself);
        } else if (*image) {
            m_prepared.append({.index = index, .image = **image});
        } else {
            skip(index);
        }
    }
}

QCoro::Task<std::optional<PreparedImage>> BatchRun::prepare(QString file, ImageReport* report) {
    ImageGathering gathering(m_parts, file);
    const ScopedAccess fileAccess(m_parts.access, file);
    const ScopedAccess folderAccess(m_parts.access, QFileInfo(file).path());
    std::optional<ScopedAccess> sidecarAccess;
    if (!gathering.metadata().isEmbedded()) {
        sidecarAccess.emplace(m_parts.access, gathering.metadata().sidecar());
    }
    co_await gathering.ensureSidecar();
    co_await gathering.readCaption();
    report->captionBefore = gathering.caption();
    if (gathering.isFinished()) {
        co_return std::nullopt;
    }
    co_await gathering.readContextOrRecreate();
    co_await gathering.readRightsAndCreator();
    co_await gathering.extractPreview();
    co_await gathering.gatherAudioNote();
    co_return gathering.image();
}

QCoro::Task<> BatchRun::captionTogether() {
    constexpr int maximumTokens = 2000;
    const CodeReplacements roster = co_await readRoster(m_parts);
    if (roster.isTruncated()) {
        m_parts.log.print(truncationWarning(roster));
    }
    const QString prompt = buildBatchPrompt(promptQuery(m_parts.settings), roster);
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
        items.append({.imageJPEGData = prepared.image.jpegData,
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
    const auto written = co_await attempt(write(prepared.image.file, *caption, prepared.image.decoded));
    if (written) {
        succeed(prepared.index, *caption, Telling::inBatch);
    } else {
        fail(prepared.index,
             u"[Analyzer] Failed to write caption for %1: %2"_s.arg(nameOf(prepared.index), written.words()),
             failureOf(written), Telling::inBatch);
    }
}

QCoro::Task<> BatchRun::captionOneByOne(CodeReplacements roster) {
    for (const Prepared& prepared : std::as_const(m_prepared)) {
        if (m_parts.turns.isClosed()) {
            co_return;
        }
        m_progress.working(prepared.index, nameOf(prepared.index));
        const auto caption = co_await attempt(askAndWrite(prepared, roster));
        if (caption) {
            succeed(prepared.index, *caption, Telling::inBatch);
        } else {
            fail(prepared.index,
                 u"[Analyzer] Individual fallback failed for %1: %2"_s.arg(nameOf(prepared.index),
                                                                           caption.words()),
                 failureOf(caption), Telling::inBatch);
        }
        co_await m_parts.clock.sleep(breath);
    }
}

QCoro::Task<> BatchRun::captionSingle(Prepared prepared) {
    m_progress.working(prepared.index, nameOf(prepared.index));
    const CodeReplacements roster = co_await readRoster(m_parts, RosterFailure::ignored);
    const auto caption = co_await attempt(askAndWrite(prepared, roster));
    if (caption) {
        succeed(prepared.index, *caption, Telling::byItself);
    } else {
        fail(prepared.index,
             u"[Analyzer] Failed to process single image %1: %2"_s.arg(nameOf(prepared.index),
                                                                       caption.words()),
             failureOf(caption), Telling::byItself);
    }
}

QCoro::Task<QString> BatchRun::askAndWrite(Prepared prepared, CodeReplacements roster) {
    const QString prompt = co_await composeImagePrompt(m_parts, prepared.image, roster);
    const CaptionReply reply = co_await askForCaption(m_parts, prepared.image.jpegData, prompt);
    const QString caption = finalizeCaption(reply.text, prepared.image.rights, m_parts.settings);
    co_await write(prepared.image.file, caption, prepared.image.decoded);
    co_return caption;
}

QCoro::Task<> BatchRun::write(QString file, QString caption, std::optional<FileStamp> decoded) {
    const ScopedAccess fileAccess(m_parts.access, file);
    const ScopedAccess folderAccess(m_parts.access, QFileInfo(file).path());
    const ImageMetadata metadata(file, m_parts.xmp, m_parts.log.console());
    co_await metadata.writeCaption(caption, decoded);
    co_await m_parts.manifest.markProcessed(file);
}

/// Left out of all counters.
void BatchRun::skip(qsizetype index) {
    ImageReport& report = m_reports[index];
    report.outcome = ImageReport::Outcome::skipped;
    report.reason = u"It already has a caption."_s;
    m_listener(report);
}

void BatchRun::succeed(qsizetype index, const QString& caption, Telling telling) {
    m_outcome.results[index].success = true;
    m_progress.succeeded(nameOf(index), telling);
    ImageReport& report = m_reports[index];
    report.outcome = ImageReport::Outcome::captioned;
    report.captionAfter = caption;
    m_listener(report);
}

BatchRun::Failure BatchRun::failureOf(const auto& attempt) {
    try {
        attempt.rethrow();
    } catch (...) {
        return {.words = attempt.words(), .cause = std::current_exception()};
    }
}

void BatchRun::fail(qsizetype index, const QString& logLine, const Failure& failure, Telling telling) {
    m_parts.log.printAndAppend(logLine);
    m_outcome.failedNames.append(nameOf(index));
    m_progress.failed(nameOf(index), telling);
    m_outcome.results[index].failed = true;
    m_outcome.results[index].cause = failure.cause;
    m_reports[index].reason = failure.words;
    m_listener(m_reports.at(index));
}

} // namespace ostrelle
