// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/TaskGroup.h"
#include "platform/Alerts.h"
#include "platform/Workspace.h"
#include "product/WebPages.h"
#include "services/UpdateChecker.h"

#include <QCoroTask>
#include <QObject>
#include <memory>

namespace ostrelle {

/// Tells the user what a check for updates has found: any result when he has asked, else only a newer
/// version.
class UpdateNews : public QObject {
    Q_OBJECT

public:
    /// The references must outlive the object and its tasks.
    UpdateNews(UpdateChecker& checker, WebPages pages, Alerts& alerts, Workspace& workspace, Clock& clock,
               PlainLog& log);

    /// Checks quietly, a moment from now.
    void checkSoon();
    /// Checks for the user, or says where updates come from.
    void check();
    /// The program is ending: begins no check.
    void stop() { m_soon.reset(); }

    /// Resumes when no news is shown.
    QCoro::Task<> finished() const { return m_tasks.finished(); }

private:
    QCoro::Task<> tell(Alert alert);
    Alert newsOf(const UpdateResult& result) const;

    UpdateChecker& m_checker;
    WebPages m_pages;
    Alerts& m_alerts;
    Workspace& m_workspace;
    Clock& m_clock;
    TaskGroup m_tasks;
    std::unique_ptr<Timer> m_soon;
};

} // namespace ostrelle
