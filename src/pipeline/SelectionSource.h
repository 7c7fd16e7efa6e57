// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/AnalyzerParts.h"
#include "pipeline/ManualSelection.h"
#include "pipeline/RunSource.h"
#include "platform/Workspace.h"

#include <QCoroTask>
#include <QString>
#include <QStringList>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace ostrelle {

class SelectionTally;

/// Access grants that are held together.
using HeldAccess = std::vector<std::unique_ptr<ScopedAccess>>;

/// The images that the user chose. Requires a chosen sidecar for each RAW image, and a key throughout the
/// run.
class SelectionSource : public RunSource {
public:
    /// `access` was begun before the choice and is held as long as the source lives. The workspace must
    /// outlive the source.
    SelectionSource(AnalyzerParts parts, Workspace& workspace, const QStringList& files, HeldAccess access)
        : m_parts(parts)
        , m_workspace(workspace)
        , m_selection(ManualSelection::of(files))
        , m_access(std::move(access)) {}

    QCoro::Task<bool> admit() override;
    QCoro::Task<std::optional<RunImages>> find() override;
    bool needsKeyThroughout() const override { return true; }
    bool showsBatches() const override { return false; }
    QString openingMessage(qsizetype imageCount) const override;
    void logBatches(qsizetype imageCount, qsizetype batchCount) override;
    void logBatch(const QList<ImageOutcome>& images) override;
    QString close(const RunTally& tally) override;
    QCoro::Task<> announce(RunTally tally) override;

private:
    /// Makes the missing sidecars of the RAW images. Failures are logged; the captioning tries again.
    QCoro::Task<> createSidecars(QStringList rawImages);
    /// True if it made one.
    QCoro::Task<bool> createSidecar(QString rawImage);
    QCoro::Task<> notify(SelectionTally tally);
    QCoro::Task<> notifyPermissionErrors(SelectionTally tally);
    QCoro::Task<> explainPermissions(SelectionTally tally);
    void print(const QString& words);

    AnalyzerParts m_parts;
    Workspace& m_workspace;
    ManualSelection m_selection;
    HeldAccess m_access;
};

} // namespace ostrelle
