// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/facts/OvertakenError.h"
#include "pipeline/AnalyzerParts.h"
#include "pipeline/ImageClaiming.h"
#include "pipeline/ImageReport.h"
#include "pipeline/ImageRequest.h"
#include "pipeline/ImageRun.h"

#include <QCoroTask>
#include <exception>
#include <functional>
#include <memory>
#include <optional>

namespace ostrelle {

/// A single image from the wait for its turn to its caption: the gates before any work, the run, and another
/// run where somebody has replaced the picture meanwhile. It lives on the frame that executes it and has the
/// turn until it ends.
class ImageTurn {
public:
    /// Whom the image is captioned for.
    enum class Sender {
        user,
        autoMode, ///< has seen to the roster, and looks anew at an image that has changed
    };
    enum class Ending {
        dismissed, ///< sent away before its turn
        refused,   ///< by a gate
        skipped,   ///< by a gate: it needs no caption
        captioned, ///< or looked at by the model and left as it is
        edited,    ///< by somebody else meanwhile: theirs stays
        changed,   ///< by somebody else meanwhile: auto mode is to look anew
        failed,
        unwritable, ///< failed before the model was asked
        keyMissing,
    };

    /// `onBegin` is called when the image has passed the gates.
    ImageTurn(AnalyzerParts parts, ImageRequest request, Sender sender, std::function<void()> onBegin);
    ImageTurn(const ImageTurn&) = delete;
    ImageTurn& operator=(const ImageTurn&) = delete;

    /// An image of auto mode that needs no further attempt is in the manifest then. Does not throw.
    QCoro::Task<Ending> execute();
    /// Whether the image has passed the gates.
    bool hasBegun() const { return m_hasBegun; }
    const ImageReport& report() const { return m_report; }
    /// Of an image that is unwritable.
    const std::optional<EditConditions>& editConditions() const { return m_editConditions; }
    /// What the failure was; null without one.
    std::exception_ptr failure() const { return m_failure; }

private:
    enum class Gate { open, skipped, closed };

    QCoro::Task<Ending> caption();

    /// Waits for the turn in this program and for other programs that caption the image. False when the image
    /// has been sent away.
    QCoro::Task<bool> admit();
    QCoro::Task<Gate> passGates(ImageRun* run);
    bool hasRoster();
    QCoro::Task<bool> hasSidecar();
    QCoro::Task<bool> hasCaption(ImageRun* run);
    Gate refuse(const QString& reason);
    Gate skip(const QString& reason);
    QCoro::Task<Ending> captionUntilSettled(std::unique_ptr<ImageRun> run);
    bool isCaptionEdited(const OvertakenError& error) const;
    Ending endingOf(const ImageRun& run);

    AnalyzerParts m_parts;
    ImageRequest m_request;
    Sender m_sender;
    std::function<void()> m_onBegin;
    QString m_name;
    std::unique_ptr<CaptionTurns::Turn> m_turn;
    HeldImage m_claim;
    ImageReport m_report;
    std::exception_ptr m_failure;
    std::optional<EditConditions> m_editConditions;
    std::optional<FileStamp> m_imageStamp; ///< of the image that is done
    bool m_hasBegun = false;
    bool m_isAnswered = false;
};

/// True when the image needs no further attempt.
bool isDone(ImageTurn::Ending ending);

} // namespace ostrelle
