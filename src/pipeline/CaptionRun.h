// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/AnalyzerParts.h"
#include "pipeline/ReadAhead.h"
#include "pipeline/RunSource.h"

#include <QCoroTask>
#include <QDateTime>
#include <QStringList>
#include <utility>

namespace ostrelle {

/// Captions the images of a source, up to ten per request. Lives on the coroutine frame that executes it.
class CaptionRun {
public:
    /// `listener` is called once for each image, except those not begun.
    CaptionRun(AnalyzerParts parts, OutcomeListener listener)
        : m_parts(parts), m_listener(std::move(listener)) {}
    CaptionRun(const CaptionRun&) = delete;
    CaptionRun& operator=(const CaptionRun&) = delete;

    /// Asks the source whether the run may begin, waits for the images being captioned, and then captions
    /// with nothing else under way. Failures of images are outcomes, not exceptions. The source must outlive
    /// the task.
    QCoro::Task<RunTally> execute(RunSource* source);

private:
    QCoro::Task<RunTally> captionInTurn(RunSource* source);
    /// Captions the files batch by batch. `begun` is when the run began.
    QCoro::Task<RunTally::Ending> captionAll(RunSource* source, QStringList files, QDateTime begun);
    QCoro::Task<RunTally::Ending> captionBatches(RunSource* source, QStringList files, QDateTime begun,
                                                 ReadAhead* ahead);
    void hear(const ImageOutcome& image);
    void nameWithoutCaption(const QList<ImageOutcome>& images);
    void failIllegible(const QStringList& files);

    AnalyzerParts m_parts;
    OutcomeListener m_listener;
    RunTally m_tally;
};

} // namespace ostrelle
