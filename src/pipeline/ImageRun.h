// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/XMPContext.h"
#include "pipeline/AnalyzerParts.h"
#include "pipeline/CodeReplacements.h"
#include "pipeline/ContextBlock.h"
#include "pipeline/ImageMetadata.h"
#include "pipeline/ImageReport.h"

#include <QByteArray>
#include <QCoroTask>
#include <QString>
#include <optional>

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
    QCoro::Task<> ensureSidecar();
    QCoro::Task<> readCaption();
    QCoro::Task<> recreateSidecar();
    QCoro::Task<> readContext();
    QCoro::Task<> dumpSidecar();
    QCoro::Task<> readRightsAndCreator();
    QCoro::Task<> extractPreview();
    QCoro::Task<> savePreview();
    QCoro::Task<QString> prompt();
    CaptionFacts facts() const;
    void logRequest(const QString& prompt);
    QCoro::Task<QString> askModel(QString prompt);
    QCoro::Task<> acceptCaption(QString reply);
    QCoro::Task<> writeCaption(QString caption);
    QCoro::Task<QString> captionForLog();

    AnalyzerParts m_parts;
    QString m_file;
    QString m_name;
    ImageMetadata m_metadata;
    ImageReport m_report;
    std::optional<QString> m_readCaption; ///< trimmed
    XMPContext m_context;
    std::optional<QString> m_rights;
    std::optional<QString> m_creator;
    CodeReplacements m_roster;
    QByteArray m_jpeg;

    QString defaultCaption() const;
};

} // namespace ostrelle
