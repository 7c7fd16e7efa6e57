// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace ostrelle {

/// Whether the folder on the server can be listed, and why not.
struct ConnectionResult {
    bool isGood = false;
    QString reason = {};               ///< a sentence
    QString untrustedCertificate = {}; ///< its SHA-256 fingerprint, if that is the reason
    bool isEncrypted = false;          ///< the server has agreed to TLS
};

} // namespace ostrelle
