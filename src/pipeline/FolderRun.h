// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/AnalyzerParts.h"
#include "pipeline/BatchRun.h"

#include <QCoroTask>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

namespace ostrelle {

/// Which images of a folder a run is to caption.
enum class FolderImages {
    all,
    onlyNew, ///< those that have not been captioned before
};

/// The status line of a run that the program's end has stopped.
QString interruptionMessage(qint64 processed, qint64 failed, qint64 notBegun);

/// Captions the images of the folder that the settings name, ten in a request. It lives on the frame that
/// executes it.
class FolderRun {
public:
    FolderRun(AnalyzerParts parts, ImageListener listener)
        : m_parts(parts), m_listener(std::move(listener)) {}
    FolderRun(const FolderRun&) = delete;
    FolderRun& operator=(const FolderRun&) = delete;

    /// Waits for the images that are being captioned, then has the captioning to itself. Does not throw: the
    /// status, an alert and the notification at the end tell what happened.
    QCoro::Task<> execute(FolderImages which);

private:
    struct Result {
        qsizetype imageCount = 0;
        qint64 processed = 0;
        qint64 failed = 0;
        bool isInterrupted = false; ///< the program ends
    };
    /// What a run finds in its folder.
    struct Finds {
        QStringList images;    ///< paths, in no particular order
        QStringList illegible; ///< names that no path leads to
    };

    /// Nothing when there is no run, of which the user has been told.
    QCoro::Task<std::optional<Result>> captionInTurn(QString folder, FolderImages which);
    QCoro::Task<> tellThatNoneIsNew();
    /// Where the settings lead to, or nothing after the user has been told.
    QCoro::Task<std::optional<QString>> permittedFolder();
    QCoro::Task<bool> hasKey();
    std::optional<QString> selectedFolder();
    QCoro::Task<bool> hasRoster(QString folder);
    /// Nothing after the user has been told.
    QCoro::Task<std::optional<Finds>> findImages(QString folder);
    QCoro::Task<QStringList> withoutProcessed(QStringList images);
    void begin(qsizetype imageCount);
    /// Returns how many images were begun.
    QCoro::Task<qsizetype> runBatches(QStringList images, QDateTime begun);
    void beginBatch(qsizetype index, qsizetype count, qsizetype imageCount);
    void failIllegible(const QString& folder, const QStringList& names);
    void end(qsizetype notBegun);
    void refuse(qint64 failed, const QString& message);

    AnalyzerParts m_parts;
    ImageListener m_listener;
    QStringList m_failedNames;
};

} // namespace ostrelle
