// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/desktop/LaunchJob.h"

#include <QString>

namespace ostrelle {

/// The entry that has the desktop start the program, hidden, when the user logs in (freedesktop.org,
/// autostart 0.5). The file is the setting: a desktop's own tool may remove it or switch it off.
class AutostartEntry {
public:
    explicit AutostartEntry(LaunchPaths paths) : m_paths(std::move(paths)) {}

    QString path() const;
    bool isOn() const;
    /// Throws FileError.
    void setOn(bool isOn) const;

private:
    LaunchPaths m_paths;
};

} // namespace ostrelle
