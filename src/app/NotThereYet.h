// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/TaskGroup.h"
#include "platform/Alerts.h"
#include "platform/PlainLog.h"
#include "product/AppEvents.h"
#include "state/SettingsStore.h"

#include <QCoroTask>
#include <QObject>

namespace ostrelle {

/// Tells the user plainly that this version cannot do what the window has a control for: start with Photo
/// Mechanic.
class NotThereYet : public QObject {
    Q_OBJECT

public:
    /// All arguments must outlive it.
    NotThereYet(const AppEvents& events, const SettingsStore& settings, Alerts& alerts, PlainLog& console);

    /// Resumes when no alert is open.
    QCoro::Task<> finished() const { return m_news.finished(); }

private:
    void tellOfPhotoMechanic();
    void tell(const QString& text);

    const SettingsStore& m_settings;
    Alerts& m_alerts;
    TaskGroup m_news;
};

} // namespace ostrelle
