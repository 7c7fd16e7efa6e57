// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

namespace ostrelle {

/// The program's in-process notifications, a signal for each. Anyone with news emits it.
class AppEvents : public QObject {
    Q_OBJECT

Q_SIGNALS:
    void showAboutWindow();
    void showSettingsWindow();
    /// The settings at the server's tab.
    void showServerSettings();
    void showHelpWindow();
    void showMainWindow();
    void showOnboardingWindow();
    void showAnalyticsWindow();
    void photoMechanicSettingChanged();
    void triggerManualFTPDownload();
    /// The user wants to choose the watch folder.
    void chooseWatchFolder();
    /// A file was added to the manifest of processed files.
    void manifestUpdated();
};

} // namespace ostrelle
