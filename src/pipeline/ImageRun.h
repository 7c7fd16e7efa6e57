// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/AnalyzerParts.h"
#include "pipeline/CodeReplacements.h"
#include "pipeline/ImageGathering.h"
#include "pipeline/ImageReport.h"

#include <QCoroTask>
#include <QString>

namespace ostrelle {

/// One image on its way through the pipeline, from the key to the written caption: the steps of
/// Analyzer::analyzeImage() and what they hand on to each other. It lives on the frame that executes it.
class ImageRun {
public:
    ImageRun(AnalyzerParts parts, QString file);
    ImageRun(const ImageRun&) = delete;
    ImageRun& operator=(const ImageRun&) = delete;

    /// Throws what went wrong, an AnalyzerError with the code missingKey first of all.
    QCoro::Task<> execute();
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
    QCoro::Task<> writeCaption(QString caption);
    QCoro::Task<QString> captionForLog();

    AnalyzerParts m_parts;
    ImageGathering m_gathering;
    ImageReport m_report;
};

} // namespace ostrelle
