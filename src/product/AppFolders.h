// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace ostrelle {

/// The program's name as users see it.
extern const QString applicationName;

/// The program's name to the desktop: folders, desktop entry, D-Bus, secrets.
extern const QString applicationIdentifier;

/// The program's own folders, one under each of the user's XDG base directories (freedesktop.org, version
/// 0.8). They need not exist yet.
struct AppFolders {
    QString config;
    QString data;
    QString promptCache; ///< of the prompt templates, separate from the data
    QString manifest;    ///< of the processed files, separate too
    QString cache;
    QString runtime; ///< empty when the session has none

    /// The user's settings.
    QString defaultsFile() const { return config + QStringLiteral("/defaults.json"); }
    /// The record of captioned files.
    QString manifestFile() const { return manifest + QStringLiteral("/processed_files.json"); }

    /// What comes from a server, if the user has chosen no other folder.
    QString downloads() const { return data + QStringLiteral("/FTPDownloads"); }

    /// Decides which program captions an image.
    QString claimsFile() const { return manifest + QStringLiteral("/claims"); }

    /// From the environment of this process: XDG_CONFIG_HOME, XDG_DATA_HOME, XDG_CACHE_HOME, XDG_RUNTIME_DIR.
    static AppFolders ofDesktop();
};

} // namespace ostrelle
