// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QUrl>

namespace ostrelle {

/// The desktop around the program's own windows.
class Workspace {
public:
    virtual ~Workspace() = default;

    /// Opens the link in the program that the desktop has for it; a link that nobody takes is logged.
    virtual void openLink(const QUrl& link) = 0;
    /// Puts the program's windows in front of those of others, as far as the desktop lets it.
    virtual void bringToFront() = 0;
};

} // namespace ostrelle
