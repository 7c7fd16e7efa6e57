// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/facts/ImageFacts.h"
#include "metadata/facts/XMPContext.h"
#include "metadata/source/CaptionSource.h"
#include "platform/PlainLog.h"

#include <QString>
#include <QTimeZone>
#include <optional>

namespace ostrelle {

/// Reads and writes image metadata. Every operation opens the file anew and is thread-safe. Throws
/// XMPError::fileMissing for a missing file, XMPError::noPacket for a document without a root, XmlError for
/// unreadable XML and FileError for what the system refuses.
class XMPWriter {
public:
    /// Writes the template of a new sidecar, with an empty caption, only if there is no sidecar. False when
    /// one now exists: another program may write it at any moment, and what it recorded about the picture
    /// must not be lost.
    bool createMissingSidecar(const QString& sidecar) const;

    /// All that is known of the image, from one opening. Dates in element form become days in the given zone.
    MetadataReading readSidecar(const QString& sidecar, const QTimeZone& zone) const;

    /// Writes that template into an existing empty sidecar. Throws FileError, also when the sidecar is no
    /// longer empty.
    void fillEmptySidecar(const QString& sidecar) const;

    /// Puts the caption into the existing sidecar and leaves everything else in it alone. On any failure the
    /// old file is intact. Also throws XMPError::writeFailed.
    void writeDefaultCaption(const QString& caption, const QString& sidecar) const;

    /// The same, but throws OvertakenError if the sidecar or the image's picture is no longer what the
    /// caption was made from. Returns the caption that the sidecar has after the write.
    std::optional<QString> writeDefaultCaption(const QString& caption, const QString& sidecar,
                                               const QString& image, const CaptionSource& source) const;

    /// readSidecar(), and whether a caption could be put into the sidecar. Changes nothing.
    EditableReading readEditableSidecar(const QString& sidecar, const QTimeZone& zone) const;

    // The same for a JPEG image, which holds its metadata itself. XMPError::fileMissing for an image that
    // cannot be opened; a file that is not a JPEG has no metadata.

    /// All that is known of the image, from one opening. Dates become days in the given zone.
    MetadataReading readEmbedded(const QString& image, const QTimeZone& zone) const;

    /// Puts the caption into the image's metadata and leaves the compressed picture and everything else
    /// alone. With a source, throws OvertakenError when metadata or picture are no longer what the caption
    /// was made from, and does not decode a picture again that was decoded for its rendition. On any failure
    /// the old file is intact. Throws XMPError::parseFailed when the picture cannot be decoded and
    /// XMPError::writeFailed when the file cannot be replaced or changed without harm.
    WrittenCaption writeEmbeddedCaption(const QString& caption, const QString& image, PlainLog& log,
                                        const std::optional<CaptionSource>& source = {}) const;
};

} // namespace ostrelle
