// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/AnalyzerParts.h"
#include "pipeline/ImageReport.h"

#include <QCoroTask>
#include <QObject>
#include <QString>

namespace ostrelle {

/// The caption pipeline for one image. Several images may be under way at once. It must outlive its tasks.
class Analyzer : public QObject {
    Q_OBJECT

public:
    explicit Analyzer(AnalyzerParts parts);

    /// Captions the image if it needs a caption. True when it needs no further attempt: it was captioned, or
    /// it was left alone because it has a caption. Never throws; imageFinished() tells the details.
    QCoro::Task<bool> analyzeSingle(QString file);

    /// Gathers what is known of the image, asks the model and writes the caption. Throws what went wrong;
    /// an AnalyzerError with the code missingKey when no API key is stored.
    QCoro::Task<ImageReport> analyzeImage(QString file);

    /// The text that the model would be sent for the image as it is. Writes nothing and asks no model. Throws
    /// what went wrong.
    QCoro::Task<QString> promptFor(QString file);

Q_SIGNALS:
    /// An image that was handed to analyzeSingle() is done with.
    void imageFinished(const ostrelle::ImageReport& report);

private:
    enum class Gate { open, done, closed };

    /// The cheap tests before any work: what they decide stands in the report.
    QCoro::Task<Gate> passGates(QString file, ImageReport* report);
    QCoro::Task<bool> hasRealCaption(QString file);
    QCoro::Task<bool> runImage(QString file, ImageReport* report);
    QCoro::Task<> askForKey();
    QCoro::Task<> countFailure(QString name, QString words);
    void setProgress(const QString& name);
    void clearProgress();

    AnalyzerParts m_parts;
};

} // namespace ostrelle
