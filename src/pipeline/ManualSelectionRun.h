// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/Analyzer.h"
#include "pipeline/ManualSelection.h"
#include "pipeline/SelectionTally.h"
#include "platform/Alerts.h"
#include "platform/Clock.h"
#include "platform/DefaultsStore.h"
#include "platform/FileAccess.h"
#include "platform/FolderThreads.h"
#include "platform/PlainLog.h"
#include "platform/Workspace.h"
#include "state/StatusStore.h"

#include <QCoroTask>
#include <QDateTime>
#include <QString>
#include <QStringList>
#include <memory>
#include <optional>
#include <vector>

#include "product/AppEvents.h"
#include "product/NotificationManager.h"

namespace ostrelle {

/// What a run over chosen images works with. All of it has to outlive the run.
struct ManualSelectionParts {
    Analyzer& analyzer;
    CaptionTurns& turns;
    StatusStore& status;
    const DefaultsStore& defaults;
    FileAccess& access;
    Alerts& alerts;
    NotificationManager& notifications;
    AppEvents& events;
    Workspace& workspace;
    FolderThreads& threads;
    Clock& clock;
    PlainLog& console;
};

/// Grants that are held together.
using HeldAccess = std::vector<std::unique_ptr<ScopedAccess>>;

/// Captions the images that the user chose, ten in a request. It lives on the frame that executes it.
class ManualSelectionRun {
public:
    explicit ManualSelectionRun(ManualSelectionParts parts) : m_parts(parts) {}
    ManualSelectionRun(const ManualSelectionRun&) = delete;
    ManualSelectionRun& operator=(const ManualSelectionRun&) = delete;

    /// Waits for the images and runs before it, then has the captioning to itself. `access` was begun before
    /// the user chose and is held to the end. Does not throw for what happens to an image: the status, alerts
    /// and notifications tell what happened.
    QCoro::Task<> execute(QStringList files, HeldAccess access);

private:
    enum class Ending {
        completed,
        keyMissing, ///< the rest was not attempted
        dismissed,  ///< the program ends
    };

    /// False after the user has been told why the selection is not captioned.
    QCoro::Task<bool> admit(ManualSelection selection, HeldAccess* access);
    /// Writes the chosen sidecars that do not exist yet. Failures are left to the captioning.
    QCoro::Task<> createSidecars(QStringList rawImages, HeldAccess* access);
    QCoro::Task<bool> createSidecar(QString rawImage, HeldAccess* access);
    QCoro::Task<Ending> captionInTurn(QStringList images);
    void begin(qint64 imageCount);
    QCoro::Task<Ending> captionAll(QStringList images, QDateTime begun);
    void count(const QString& image, const AnalyzedFile& result);
    void clearProgress();
    QCoro::Task<> askForKey();
    QCoro::Task<> notify();
    QCoro::Task<> notifyPermissionErrors();
    QCoro::Task<> explainPermissions();
    bool hasKey() const;

    ManualSelectionParts m_parts;
    SelectionTally m_tally;
    qint64 m_begun = 0; ///< images
};

} // namespace ostrelle
