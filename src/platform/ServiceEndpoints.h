// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QUrl>

namespace ostrelle {

/// The addresses of the outside world: scheme and host; the paths belong to the clients.
struct ServiceEndpoints {
    QUrl model;

    /// The addresses that this program was built with.
    static ServiceEndpoints builtIn();
};

} // namespace ostrelle
