// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/TaskGroup.h"
#include "platform/Alerts.h"
#include "platform/PlainLog.h"
#include "product/AppEvents.h"
#include "state/SettingsStore.h"
#include "transfer/RemoteSource.h"

#include <QCoroTask>
#include <QObject>

namespace ostrelle {

/// The remote source of a program that cannot download yet.
class AbsentRemoteSource : public QObject, public RemoteSource {
    Q_OBJECT

public:
    void start() override { Q_EMIT wanted(); }
    void stop() override {}

Q_SIGNALS:
    void wanted();
};

/// Tells the user plainly that this version cannot do what the window has controls for: download from an FTP
/// server, which leaves auto mode off, and start with Photo Mechanic.
class NotThereYet : public QObject {
    Q_OBJECT

public:
    /// All arguments must outlive it.
    NotThereYet(const AbsentRemoteSource& remote, const AppEvents& events, SettingsStore& settings,
                Alerts& alerts, PlainLog& console);

    /// Resumes when no alert is open.
    QCoro::Task<> finished() const { return m_news.finished(); }

private:
    void tellOfDownloads();
    void tellOfPhotoMechanic();
    void tell(const QString& text);

    SettingsStore& m_settings;
    Alerts& m_alerts;
    TaskGroup m_news;
};

} // namespace ostrelle
