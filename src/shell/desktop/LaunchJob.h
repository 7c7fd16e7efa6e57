// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace ostrelle {

/// Where the helper is, what it starts, and where jobs of the user are kept. Absolute paths.
struct LaunchPaths {
    QString helper;  ///< OstrelleCaptionsHelper.sh
    QString program; ///< ostrelle-captions
    QString config;  ///< $XDG_CONFIG_HOME
};

/// What is done about a job of the user, in the words of launchctl and its kin.
enum class LaunchStep { pkill, bootout, unload, remove, bootstrap, load, loadForced, kickstart, list, pgrep };

/// A command; an empty program stands for nothing to do.
struct LaunchCommand {
    QString program = {};
    QStringList arguments = {};
};

/// The job as the desktop's manager knows it: a unit of the systemd user manager, or, without one, an XDG
/// autostart entry, whose helper ends by itself when the entry is gone.
class LaunchJob {
public:
    enum class Manager { systemd, autostart };

    LaunchJob(Manager manager, LaunchPaths paths) : m_manager(manager), m_paths(std::move(paths)) {}

    QString path() const;
    QByteArray contents() const;
    LaunchCommand command(LaunchStep step) const;

    /// Succeeds where a systemd user manager can be asked.
    static LaunchCommand managerQuestion();

private:
    Manager m_manager;
    LaunchPaths m_paths;
};

/// A word of a command line in a unit file (systemd.service(5)): quoted, and no specifier or variable.
QString unitWord(const QString& text);
/// A word of the Exec key of a desktop entry (freedesktop.org, desktop entries 1.5), as it stands in the
/// file.
QString desktopEntryWord(const QString& text);

} // namespace ostrelle
