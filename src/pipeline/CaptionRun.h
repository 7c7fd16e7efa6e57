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

/// Captions the images of a source, ten in a request. It lives on the frame that executes it.
class CaptionRun {
public:
    CaptionRun(AnalyzerParts parts, OutcomeListener listener)
        : m_parts(parts), m_listener(std::move(listener)) {}
    CaptionRun(const CaptionRun&) = delete;
    CaptionRun& operator=(const CaptionRun&) = delete;

    /// Waits for the images that are being captioned, then has the captioning to itself. The source has to
    /// outlive the task. Does not throw for what happens to an image.
    QCoro::Task<RunTally> execute(RunSource* source);

private:
    QCoro::Task<RunTally> captionInTurn(RunSource* source);
    /// Of a run that began.
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
