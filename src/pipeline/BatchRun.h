// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/AnalyzerParts.h"
#include "pipeline/BatchProgress.h"
#include "pipeline/CodeReplacementsReading.h"
#include "pipeline/ImageClaiming.h"
#include "pipeline/ImageReport.h"
#include "pipeline/PreparedImage.h"

#include <QCoroTask>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>
#include <exception>
#include <functional>
#include <optional>

namespace ostrelle {

/// What became of one file of a batch.
struct BatchFileResult {
    QString name;
    bool isBegun = false;          ///< false when the program ended before
    bool success = false;          ///< its caption was written in this run
    bool failed = false;           ///< not so an image that was left alone
    std::exception_ptr cause = {}; ///< what it failed of, where that was an exception
};

/// What a batch did: a result for each file that it was given, in that order, and the failed ones' names. A
/// file that was left alone for its caption has neither success nor failed.
struct BatchOutcome {
    QList<BatchFileResult> results;
    QStringList failedNames;
};

/// Hears of each image that is done with.
using ImageListener = std::function<void(const ImageReport& report)>;

/// Up to ten images whose captions are asked for in one request: gathers what is known of each, asks, and
/// writes what comes back. Images for which that fails as a whole are asked for one by one, and so are those
/// that somebody replaces meanwhile. It lives on the frame that executes it.
class BatchRun {
public:
    /// Images in one request: more, and the reply's tokens do not suffice.
    static constexpr qsizetype mostImages = 10;

    /// `startIndex` is the place of the first file in the whole run, from 0. Images that another program has
    /// captioned since the run began are left alone.
    BatchRun(AnalyzerParts parts, QStringList files, qint64 startIndex, QDateTime begun,
             ImageListener listener);
    BatchRun(const BatchRun&) = delete;
    BatchRun& operator=(const BatchRun&) = delete;

    /// Does not throw for what happens to an image or a request.
    QCoro::Task<BatchOutcome> execute();

private:
    /// An image that is ready for the model, and its place among the files.
    struct Prepared {
        qsizetype index;
        PreparedImage image;
    };
    /// Why an image failed.
    struct Failure {
        QString words;
        std::exception_ptr cause = {};
    };

    QCoro::Task<> prepareAll();
    QCoro::Task<> prepareOne(qsizetype index);
    /// Nothing for an image that is to be left alone. Throws what went wrong.
    QCoro::Task<std::optional<PreparedImage>> prepare(QString file, ImageReport* report);
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
    QCoro::Task<> write(Prepared prepared, QString caption);
    QList<BatchImageItem> items() const;
    void takeWarnings(const RosterReading& roster);
    void skip(qsizetype index, const QString& reason);
    void succeed(qsizetype index, const QString& caption, BatchProgress::Telling telling);
    /// What the attempt ended with.
    static Failure failureOf(const auto& attempt);
    /// An image without a caption of ours. One that somebody has changed meanwhile has not failed: it is left
    /// alone, or captioned anew. For one that has, `logLine` is logged.
    QCoro::Task<> endWithout(qsizetype index, QString logLine, Failure failure,
                             BatchProgress::Telling telling);
    void fail(qsizetype index, const QString& logLine, const Failure& failure,
              BatchProgress::Telling telling);
    /// The file is done with.
    void report(qsizetype index);
    QString nameOf(qsizetype index) const { return m_outcome.results.at(index).name; }

    AnalyzerParts m_parts;
    QDateTime m_begun;
    ImageListener m_listener;
    BatchProgress m_progress;
    QList<ImageReport> m_reports; ///< one for each file
    QList<HeldImage> m_claims;    ///< likewise
    QList<Prepared> m_prepared;
    QList<qsizetype> m_replaced; ///< to be done anew
    BatchOutcome m_outcome;
};

} // namespace ostrelle
