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

/// A single image from the wait for its turn to its outcome: the gates before any work, the run, and another
/// run where somebody has replaced the picture meanwhile. It lives on the frame that executes it and has the
/// turn until it is destroyed.
class ImageTurn {
public:
    ImageTurn(AnalyzerParts parts, ImageRequest request);
    ImageTurn(const ImageTurn&) = delete;
    ImageTurn& operator=(const ImageTurn&) = delete;

    /// An image of auto mode that needs no further attempt is in the manifest then. Does not throw.
    QCoro::Task<ImageOutcome> execute();

private:
    QCoro::Task<ImageOutcome> caption();

    /// Waits for the turn in this program and for other programs that caption the image. False when the image
    /// has been sent away.
    QCoro::Task<bool> admit();
    /// Nothing for an image that may go on.
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
