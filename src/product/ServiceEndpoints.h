// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

namespace ostrelle {

/// The addresses of the outside services: scheme and host; clients add the paths.
struct ServiceEndpoints {
    QUrl model = {};
    QUrl prompt = {}; ///< empty: the program serves prompt templates to itself
    /// The key that identifies clients to the prompt service, in printable characters; empty if it issued
    /// none.
    QString promptKey = {};
    QUrl analytics = {};       ///< the whole address of the service for usage figures; empty: none are sent
    QString analyticsKey = {}; ///< its public key
    QUrl measurement = {};     ///< of the service for usage events; empty: none are sent
    QString measurementId = {};
    QString measurementSecret = {};
    QUrl updates = {};          ///< of the list of versions; empty: updates come with the system's packages
    QByteArray updatesKey = {}; ///< that signs it: Ed25519, 32 bytes

    /// The addresses this program was built with.
    static ServiceEndpoints builtIn();
};

/// The text of a built-in key, stored as base64 of UTF-8; empty when it is not that or holds a control
/// character.
QString decodeKey(const QByteArray& base64);

} // namespace ostrelle
