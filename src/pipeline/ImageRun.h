// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/AnalyzerParts.h"
#include "pipeline/CodeReplacementsReading.h"
#include "pipeline/ImageGathering.h"
#include "pipeline/ImageReport.h"
#include "pipeline/ImageRequest.h"

#include <QCoroTask>
#include <QString>
#include <optional>

namespace ostrelle {

/// One image on its way through the pipeline, from the key to the written caption: the steps of
/// Analyzer::analyzeImage() and what they hand on to each other. It lives on the frame that executes it.
class ImageRun {
public:
    /// With what a scan has seen of it, the image is captioned only if it is still that.
    ImageRun(AnalyzerParts parts, ImageRequest request);
    ImageRun(const ImageRun&) = delete;
    ImageRun& operator=(const ImageRun&) = delete;

    /// Reads the metadata ahead of execute() and gives the caption; nothing when they cannot be read.
    QCoro::Task<std::optional<QString>> peekCaption();
    /// Throws what went wrong, an AnalyzerError with the code missingKey first of all, and OvertakenError
    /// when the image is no longer what was seen, or what the model was asked about.
    QCoro::Task<> execute();
    /// True when execute() has failed since no caption could be written.
    bool isUnwritable() const { return m_isUnwritable; }
    /// What decided on that, from before the model was asked.
    const std::optional<EditConditions>& editConditions() const { return m_gathering.editConditions(); }
    /// The image file as it was captioned, or else as it was read.
    const std::optional<FileStamp>& imageStamp() const {
        return m_imageStamp ? m_imageStamp : m_gathering.imageStamp();
    }
    /// Whether the model has answered.
    bool isAnswered() const { return m_isAnswered; }
    /// The text that the model would be sent for the image as it is. Writes nothing and asks no model.
    QCoro::Task<QString> composePrompt();
    const ImageReport& report() const { return m_report; }

private:
    void requireKey() const;
    QCoro::Task<> dumpSidecar();
    QCoro::Task<> savePreview();
    void logRequest(const QString& prompt, const CodeReplacements& roster);
    QCoro::Task<QString> askModel(QString prompt);
    QCoro::Task<> acceptCaption(QString reply);
    void requireUnchanged() const;
    QCoro::Task<> requireEditable();
    QCoro::Task<> writeAndCheck(QString caption);
    QCoro::Task<QString> captionForLog();

    AnalyzerParts m_parts;
    ImageGathering m_gathering;
    ImageRequest m_request;
    ImageReport m_report;
    std::optional<FileStamp> m_imageStamp;
    bool m_isUnwritable = false;
    bool m_isAnswered = false;
};

} // namespace ostrelle
