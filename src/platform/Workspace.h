// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QUrl>

namespace ostrelle {

/// The desktop around the program's own windows.
class Workspace {
public:
    virtual ~Workspace() = default;

    /// Opens the link in the desktop's program for it; logs a link that no program takes.
    virtual void openLink(const QUrl& link) = 0;
    /// Raises the program's windows above those of others, as far as the desktop allows.
    virtual void bringToFront() = 0;
};

} // namespace ostrelle
