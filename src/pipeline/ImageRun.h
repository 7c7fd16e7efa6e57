// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/facts/OvertakenError.h"
#include "pipeline/AnalyzerParts.h"
#include "pipeline/CodeReplacementsReading.h"
#include "pipeline/ImageGathering.h"
#include "pipeline/ImageOutcome.h"
#include "pipeline/ImageRequest.h"

#include <QCoroTask>
#include <QString>
#include <exception>
#include <optional>

namespace ostrelle {

/// One image on its way through the pipeline, from the API key to the written caption: the steps of
/// Analyzer::analyzeImage() and the state they share. Lives on the coroutine frame that executes it.
class ImageRun {
public:
    /// If the request has facts or a stamp, the image is captioned only while they still hold.
    ImageRun(AnalyzerParts parts, ImageRequest request, Opening opening = {.dumpsSidecar = true});
    ImageRun(const ImageRun&) = delete;
    ImageRun& operator=(const ImageRun&) = delete;

    /// Opens the image ahead of execute() and makes the missing sidecar of a RAW image. Returns why that
    /// failed; empty if it did not.
    QCoro::Task<QString> openImage();
    /// The caption of an opened image; nothing if it has none or could not be read.
    std::optional<QString> readCaption() const { return m_gathering.readCaption(); }

    /// Does not throw: the outcome holds the exception.
    QCoro::Task<ImageOutcome> execute();
    /// See Analyzer::promptFor().
    QCoro::Task<QString> composePrompt();

private:
    QCoro::Task<> caption();
    void requireKey() const;
    void requireUnchanged() const;
    void requireEditable();
    QCoro::Task<> savePreview();
    QCoro::Task<RosterReading> readItsRoster();
    QCoro::Task<QString> composePromptWith(CodeReplacements roster);
    void logRequest(const QString& prompt, const CodeReplacements& roster);
    QCoro::Task<QString> askModel(QString prompt);
    QCoro::Task<> write(QString caption);
    void fail(const std::exception_ptr& failure);
    OutcomeKind kindOf(const std::exception_ptr& failure) const;
    bool isCaptionEdited(const OvertakenError& error) const;

    AnalyzerParts m_parts;
    ImageRequest m_request;
    ImageGathering m_gathering;
    ImageOutcome m_outcome;
    bool m_isUnwritable = false;
    bool m_isAnswered = false;
};

} // namespace ostrelle
