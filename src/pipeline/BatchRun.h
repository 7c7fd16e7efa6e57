// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/AnalyzerParts.h"
#include "pipeline/BatchProgress.h"
#include "pipeline/CodeReplacements.h"
#include "pipeline/ImageReport.h"
#include "pipeline/PreparedImage.h"

#include <QCoroTask>
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
/// writes what comes back. Images for which that fails as a whole are asked for one by one. It lives on the
/// frame that executes it.
class BatchRun {
public:
    /// Images in one request: more, and the reply's tokens do not suffice.
    static constexpr qsizetype mostImages = 10;

    /// `startIndex` is the place of the first file in the whole run, from 0.
    BatchRun(AnalyzerParts parts, QStringList files, qint64 startIndex, ImageListener listener);
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
    /// Nothing for an image that is to be left alone. Throws what went wrong.
    QCoro::Task<std::optional<PreparedImage>> prepare(QString file, ImageReport* report);
    QCoro::Task<> captionTogether();
    QCoro::Task<> writeReply(BatchCaptionReply reply);
    QCoro::Task<> writeFromReply(Prepared prepared, std::optional<QString> caption);
    QCoro::Task<> captionOneByOne(CodeReplacements roster);
    QCoro::Task<> captionSingle(Prepared prepared);
    /// Asks for the one image and writes its caption, which is the result. Throws what went wrong.
    QCoro::Task<QString> askAndWrite(Prepared prepared, CodeReplacements roster);
    QCoro::Task<> write(QString file, QString caption, std::optional<FileStamp> decoded);
    QList<BatchImageItem> items() const;
    void skip(qsizetype index);
    void succeed(qsizetype index, const QString& caption, BatchProgress::Telling telling);
    /// What the attempt ended with.
    static Failure failureOf(const auto& attempt);
    void fail(qsizetype index, const QString& logLine, const Failure& failure,
              BatchProgress::Telling telling);
    QString nameOf(qsizetype index) const { return m_outcome.results.at(index).name; }

    AnalyzerParts m_parts;
    ImageListener m_listener;
    BatchProgress m_progress;
    QList<ImageReport> m_reports; ///< one for each file
    QList<Prepared> m_prepared;
    BatchOutcome m_outcome;
};

} // namespace ostrelle
