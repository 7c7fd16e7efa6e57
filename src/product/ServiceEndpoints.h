// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

namespace ostrelle {

/// The addresses of the outside world: scheme and host; the paths belong to the clients.
struct ServiceEndpoints {
    QUrl model = {};
    QUrl prompt = {}; ///< empty: the program serves the prompt templates to itself
    /// What the prompt service knows its clients by, in printable characters; empty when it issued none.
    QString promptKey = {};

    /// The addresses that this program was built with.
    static ServiceEndpoints builtIn();
};

/// The text of a key that is built in as base64 of UTF-8; empty when it is not that, or holds a control
/// character.
QString decodeKey(const QByteArray& base64);

} // namespace ostrelle
