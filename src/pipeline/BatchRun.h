// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Attempt.h"
#include "pipeline/AnalyzerParts.h"
#include "pipeline/CaptionAcceptance.h"
#include "pipeline/CodeReplacementsReading.h"
#include "pipeline/ImageClaiming.h"
#include "pipeline/ImageOutcome.h"
#include "pipeline/PreparedImage.h"
#include "pipeline/ReadAhead.h"

#include <QCoroTask>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>
#include <exception>
#include <memory>
#include <optional>

namespace ostrelle {

/// A batch's place in its run.
struct BatchPlace {
    qint64 startIndex = 0; ///< the place of its first image in the run, from 0
    QDateTime begun;       ///< start of the run; images that other programs have captioned since are skipped
};

/// Captions up to ten images with one request: gathers the facts of each, asks the model and writes the
/// captions. Images are requested one by one if the whole request fails, if only one needs a caption, or if
/// another program has changed them meanwhile. Lives on the coroutine frame that executes it.
class BatchRun {
public:
    /// The most images per request: the token limit of the reply has no room for more.
    static constexpr qsizetype mostImages = 10;

    /// `ahead` reads the images of the whole run and must outlive the batch.
    BatchRun(AnalyzerParts parts, QStringList files, BatchPlace place, ReadAhead* ahead,
             OutcomeListener listener);
    BatchRun(const BatchRun&) = delete;
    BatchRun& operator=(const BatchRun&) = delete;

    /// Returns an outcome for each file, in their order; those not reached when the program ends are
    /// notBegun. Failures of images and requests are outcomes, not exceptions.
    QCoro::Task<QList<ImageOutcome>> execute();

private:
    using Mention = CaptionProgress::Mention;

    /// An image that is ready for the model, and its index among the files.
    struct Prepared {
        qsizetype index;
        PreparedImage image;
    };

    QCoro::Task<> prepareAll();
    QCoro::Task<> prepareOne(qsizetype index, std::shared_ptr<const OpenedImage> ahead);
    /// Nothing for an image that keeps its caption. Throws the failure.
    QCoro::Task<std::optional<PreparedImage>> prepare(ImageOutcome* image,
                                                      std::shared_ptr<const OpenedImage> ahead);
    QCoro::Task<> captionPrepared();
    QCoro::Task<> captionTogether();
    QCoro::Task<> writeReply(BatchCaptionReply reply);
    QCoro::Task<> writeFromReply(Prepared prepared, std::optional<QString> caption);
    QCoro::Task<> captionOneByOne(RosterReading roster);
    QCoro::Task<> captionSingle(Prepared prepared);
    /// Captions images again that another program has changed since they were prepared. They fail after two
    /// more attempts.
    QCoro::Task<> captionReplaced();
    /// Requests and writes the caption of one image, and returns it. Throws the failure.
    QCoro::Task<QString> askAndWrite(Prepared prepared, RosterReading roster);
    /// Writes the caption that the reply becomes on its path, and returns it. Throws the failure.
    QCoro::Task<QString> write(Prepared prepared, CaptionPath path, QString reply);
    QList<BatchImageItem> items() const;
    void takeWarnings(const RosterReading& roster);
    QCoro::Task<> pauseBetweenImages();

    void skip(qsizetype index, OutcomeKind kind, const QString& reason);
    /// Ends an image with its caption, or with a failure, which is logged: `logLine` takes the name and the
    /// description. An image that another program has changed meanwhile does not fail: it keeps a caption
    /// written there, which the manifest records, and is captioned again otherwise.
    QCoro::Task<> end(qsizetype index, Attempt<QString> caption, QString logLine, Mention mention);
    void succeed(qsizetype index, const QString& caption, Mention mention);
    void fail(qsizetype index, const QString& logLine, const QString& reason, std::exception_ptr cause,
              Mention mention);
    QString nameOf(qsizetype index) const;

    AnalyzerParts m_parts;
    BatchPlace m_place;
    ReadAhead* m_ahead;
    OutcomeListener m_listener;
    QList<ImageOutcome> m_outcomes; ///< one for each file
    QList<HeldImage> m_claims;      ///< one for each file, or none when the program ended first
    QList<Prepared> m_prepared;
    QList<qsizetype> m_replaced; ///< to be captioned again
};

} // namespace ostrelle
