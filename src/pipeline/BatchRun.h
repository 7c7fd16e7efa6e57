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
    qint64 startIndex = 0; ///< of its first image in the run, from 0
    QDateTime begun;       ///< the run; images that another program has captioned since are left alone
};

/// Up to ten images whose captions are asked for in one request: gathers what is known of each, asks, and
/// writes what comes back. Where the request fails as a whole, its images are asked for one by one, and so
/// are those that somebody replaces meanwhile. It lives on the frame that executes it.
class BatchRun {
public:
    /// Images in one request: more, and the reply's tokens do not suffice.
    static constexpr qsizetype mostImages = 10;

    /// `ahead` reads the images of the run and has to outlive the batch.
    BatchRun(AnalyzerParts parts, QStringList files, BatchPlace place, ReadAhead* ahead,
             OutcomeListener listener);
    BatchRun(const BatchRun&) = delete;
    BatchRun& operator=(const BatchRun&) = delete;

    /// Does not throw for what happens to an image or a request. Resumes with an outcome for each file, in
    /// their order.
    QCoro::Task<QList<ImageOutcome>> execute();

private:
    using Mention = CaptionProgress::Mention;

    /// An image that is ready for the model, and its place among the files.
    struct Prepared {
        qsizetype index;
        PreparedImage image;
    };

    QCoro::Task<> prepareAll();
    QCoro::Task<> prepareOne(qsizetype index, std::shared_ptr<const ImageAhead> ahead);
    /// Nothing for an image that is to be left alone. Throws what went wrong.
    QCoro::Task<std::optional<PreparedImage>> prepare(ImageOutcome* image,
                                                      std::shared_ptr<const ImageAhead> ahead);
    QCoro::Task<> captionPrepared();
    QCoro::Task<> captionTogether();
    QCoro::Task<> writeReply(BatchCaptionReply reply);
    QCoro::Task<> writeFromReply(Prepared prepared, std::optional<QString> caption);
    QCoro::Task<> captionOneByOne(RosterReading roster);
    QCoro::Task<> captionSingle(Prepared prepared);
    /// Captions anew what somebody has replaced since it was prepared.
    QCoro::Task<> captionReplaced();
    /// Asks for the one image and writes its caption, which is the result. Throws what went wrong.
    QCoro::Task<QString> askAndWrite(Prepared prepared, RosterReading roster);
    /// Writes what the reply becomes on its path, which is the result. Throws what went wrong.
    QCoro::Task<QString> write(Prepared prepared, CaptionPath path, QString reply);
    QList<BatchImageItem> items() const;
    void takeWarnings(const RosterReading& roster);
    QCoro::Task<> pauseBetweenImages();

    void skip(qsizetype index, OutcomeKind kind, const QString& reason);
    /// The caption, or why there is none, for which `logLine` is logged with the failure's words. An image
    /// that somebody has changed meanwhile has not failed: it is left alone, or captioned anew.
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
    QList<HeldImage> m_claims;      ///< likewise
    QList<Prepared> m_prepared;
    QList<qsizetype> m_replaced; ///< to be done anew
};

} // namespace ostrelle
