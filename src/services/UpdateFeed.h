// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QVersionNumber>

namespace ostrelle {

/// What a feed tells of the newest version.
struct UpdateFeed {
    QVersionNumber version;
    QDateTime published; ///< when the feed was made: an older one than was seen is somebody's copy
    QString notes;       ///< plain text; may be empty

    static constexpr qsizetype largest = qsizetype{1024} * 1024; ///< bytes

    /// Reads a feed: a line with the Ed25519 signature (RFC 8032) of all that follows it, in base64, then a
    /// JSON object with "version", "published" (ISO 8601 with its zone) and "notes". `publicKey` has 32
    /// bytes. Throws Error when it is too large, not signed with that key, or says something else.
    static UpdateFeed read(const QByteArray& bytes, const QByteArray& publicKey);
};

} // namespace ostrelle
