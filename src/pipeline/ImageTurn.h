// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/AnalyzerParts.h"
#include "pipeline/ImageClaiming.h"
#include "pipeline/ImageOutcome.h"
#include "pipeline/ImageRequest.h"
#include "pipeline/ImageRun.h"

#include <QCoroTask>
#include <QString>
#include <memory>
#include <optional>

namespace ostrelle {

/// A single image from the wait for its turn to its outcome: the checks before any work, the run, and another
/// run if the image has changed meanwhile. Lives on the coroutine frame that executes it and holds the turn
/// until it is destroyed.
class ImageTurn {
public:
    ImageTurn(AnalyzerParts parts, ImageRequest request);
    ImageTurn(const ImageTurn&) = delete;
    ImageTurn& operator=(const ImageTurn&) = delete;

    /// An image of auto mode or from a server that needs no further attempt is in the manifest afterwards.
    /// Does not throw.
    QCoro::Task<ImageOutcome> execute();

private:
    QCoro::Task<ImageOutcome> caption();

    /// Waits for the turn in this program and for other programs that caption the image. False when the image
    /// is dismissed.
    QCoro::Task<bool> admit();
    /// The outcome of an image that is stopped before any work; nothing for one that may go on.
    QCoro::Task<std::optional<ImageOutcome>> stopAtGate(ImageRun* run);
    bool hasRoster();
    bool hasCaption(const ImageRun& run);
    ImageOutcome outcome(OutcomeKind kind, const QString& reason = {}) const;
    QCoro::Task<ImageOutcome> captionUntilSettled(std::unique_ptr<ImageRun> run);

    AnalyzerParts m_parts;
    ImageRequest m_request;
    QString m_name;
    std::unique_ptr<CaptionTurns::Turn> m_turn;
    HeldImage m_claim;
};

} // namespace ostrelle
