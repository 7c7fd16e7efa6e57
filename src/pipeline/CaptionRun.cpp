// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/CaptionRun.h"

#include "pipeline/BatchRun.h"
#include "pipeline/FolderTidying.h"
#include "pipeline/ImageFailure.h"
#include "pipeline/ImageListing.h"
#include "platform/Patience.h"
#include "product/ApiKey.h"

#include <QFileInfo>
#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;
using Ending = RunTally::Ending;

namespace {

/// How long the end of a run waits for a network share that may hang.
constexpr std::chrono::seconds sharePatience{2};

bool missesKey(const ImageOutcome& image) {
    return image.cause && classifyFailure(image.cause, image.file).kind == ImageFailure::Kind::missingKey;
}

} // namespace

QCoro::Task<RunTally> CaptionRun::execute(RunSource* source) {
    if (!co_await source->admit()) {
        co_return RunTally();
    }
    const RunTally tally = co_await captionInTurn(source);
    if (tally.ending == Ending::completed || tally.ending == Ending::keyMissing) {
        co_await source->announce(tally);
    }
    co_return tally;
}

QCoro::Task<RunTally> CaptionRun::captionInTurn(RunSource* source) {
    m_parts.journal.beginRun();
    const auto turn = co_await m_parts.turns.runTurn();
    if (!turn) {
        co_return RunTally{.ending = Ending::interrupted, .images = {}};
    }
    const QDateTime begun = m_parts.clock.now();
    const std::optional<RunImages> found = co_await source->find();
    if (!found) {
        co_return RunTally();
    }
    const qsizetype count = found->files.size() + found->illegible.size();
    m_parts.progress.beginRun(count, source->openingMessage(count));
    m_tally.ending = Ending::completed;
    if (count > 0) {
        failIllegible(found->illegible);
        m_tally.ending = co_await captionAll(source, found->files, begun);
        const bool isWhole = m_tally.ending == Ending::completed;
        m_parts.progress.endRun(isWhole ? CaptionProgress::RunEnd::completed
                                        : CaptionProgress::RunEnd::broken,
                                source->close(m_tally));
    }
    co_return m_tally;
}

QCoro::Task<RunTally::Ending> CaptionRun::captionAll(RunSource* source, QStringList files, QDateTime begun) {
    co_await tidyFoldersOf(m_parts.threads, files);
    ReadAhead ahead(m_parts.threads, files, m_parts.clock.timeZone(),
                    !m_parts.settings.alwaysOverwriteCaptions());
    const Ending ending = co_await captionBatches(source, files, begun, &ahead);
    // Nothing may be decoding any more when the program ends, unless a network share hangs.
    co_await endsWithin(ahead.stop(), m_parts.clock, sharePatience);
    co_return ending;
}

QCoro::Task<RunTally::Ending> CaptionRun::captionBatches(RunSource* source, QStringList files,
                                                         QDateTime begun, ReadAhead* ahead) {
    constexpr qsizetype size = BatchRun::mostImages;
    const qsizetype batchCount = (files.size() + size - 1) / size;
    source->logBatches(files.size(), batchCount);
    const qsizetype first = m_tally.images.size(); // after the illegible ones
    for (const QString& file : std::as_const(files)) {
        m_tally.images.emplace_back().file = file;
    }
    for (qsizetype start = 0; start < files.size(); start += size) {
        if (!co_await m_parts.turns.mayGoOn()) {
            co_return Ending::interrupted;
        }
        if (source->needsKeyThroughout() && apiKey(m_parts.defaults).isEmpty()) {
            co_return Ending::keyMissing; // spares each image of this batch a failure
        }
        const QStringList batch = files.mid(start, size);
        if (source->showsBatches()) {
            m_parts.progress.beginBatch(start / size + 1, batchCount, start, batch.size());
        }
        BatchRun run(m_parts, batch, {.startIndex = start, .begun = begun}, ahead,
                     [this](const ImageOutcome& image) { hear(image); });
        const QList<ImageOutcome> outcomes = co_await run.execute();
        std::copy(outcomes.begin(), outcomes.end(), m_tally.images.begin() + first + start);
        nameWithoutCaption(outcomes);
        source->logBatch(outcomes);
        if (source->needsKeyThroughout() && std::any_of(outcomes.begin(), outcomes.end(), missesKey)) {
            co_return Ending::keyMissing;
        }
    }
    co_return m_tally.notBegun() > 0 ? Ending::interrupted : Ending::completed;
}

void CaptionRun::failIllegible(const QStringList& files) {
    for (const QString& file : files) {
        ImageOutcome& image = m_tally.images.emplace_back();
        image.file = file;
        image.kind = OutcomeKind::failed;
        image.reason = illegibleNameWords();
        m_parts.progress.countFailed(QFileInfo(file).fileName(), CaptionProgress::Mention::byItself);
        hear(image);
    }
}

void CaptionRun::hear(const ImageOutcome& image) {
    if (isFailure(image.kind)) {
        m_tally.namesWithoutCaption.append(QFileInfo(image.file).fileName());
    }
    m_listener(image);
}

void CaptionRun::nameWithoutCaption(const QList<ImageOutcome>& images) {
    for (const ImageOutcome& image : images) {
        if (image.kind != OutcomeKind::captioned) {
            m_tally.namesWithoutCaption.append(QFileInfo(image.file).fileName());
        }
    }
}

} // namespace ostrelle
