// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace ostrelle {

/// What people call this program.
extern const QString applicationName;

/// The name under which the desktop knows this program: folders, desktop entry, D-Bus, secrets.
extern const QString applicationIdentifier;

/// The program's own folders, one below each of the user's XDG base directories (the XDG base
/// directories of freedesktop.org, version 0.8). They need not exist yet.
struct AppFolders {
    QString config;
    QString data;
    QString promptCache; ///< of the prompt templates, a folder of its own beside the data
    QString manifest;    ///< of the processed files, another one
    QString cache;
    QString runtime; ///< empty when the session has none

    /// Where the user's settings are kept.
    QString defaultsFile() const { return config + QStringLiteral("/defaults.json"); }
    /// Where it is kept which files have been captioned.
    QString manifestFile() const { return manifest + QStringLiteral("/processed_files.json"); }

    /// Where it is settled which program captions an image.
    QString claimsFile() const { return manifest + QStringLiteral("/claims"); }

    /// As the environment of this process says: XDG_CONFIG_HOME, XDG_DATA_HOME, XDG_CACHE_HOME,
    /// XDG_RUNTIME_DIR.
    static AppFolders ofDesktop();
};

} // namespace ostrelle
