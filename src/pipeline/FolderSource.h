// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/AnalyzerParts.h"
#include "pipeline/RunSource.h"

#include <QCoroTask>
#include <QString>
#include <QStringList>
#include <memory>
#include <optional>

namespace ostrelle {

/// Which images of a folder a run is to caption.
enum class FolderImages {
    all,
    onlyNew,        ///< those that are not in the manifest
    withoutCaption, ///< those that have no caption at all
};

/// The images of the folder in the settings: the ingest folder or the remote source's destination. Requires a
/// key, a folder and a roster. Runs that lose the key go on, image by image.
class FolderSource : public RunSource {
public:
    FolderSource(AnalyzerParts parts, FolderImages which) : m_parts(parts), m_which(which) {}

    QCoro::Task<bool> admit() override;
    QCoro::Task<std::optional<RunImages>> find() override;
    bool needsKeyThroughout() const override { return false; }
    bool showsBatches() const override { return true; }
    QString openingMessage(qsizetype imageCount) const override;
    void logBatches(qsizetype imageCount, qsizetype batchCount) override;
    void logBatch(const QList<ImageOutcome>&) override {}
    QString close(const RunTally& tally) override;
    QCoro::Task<> announce(RunTally tally) override;

private:
    std::optional<QString> selectedFolder();
    QCoro::Task<bool> hasRoster();
    QCoro::Task<QStringList> withoutProcessed(QStringList images);
    void refuse(const QString& logLine, const QString& message);

    AnalyzerParts m_parts;
    FolderImages m_which;
    QString m_folder;
    std::unique_ptr<ScopedAccess> m_access; ///< to the folder, from find() on
};

} // namespace ostrelle
