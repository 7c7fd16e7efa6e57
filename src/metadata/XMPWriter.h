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

/// Reads and writes image metadata. Every operation opens the file anew and is safe on any thread. A missing
/// file is XMPError::fileMissing and a document without root XMPError::noPacket; XML that cannot be read is
/// an XmlError, and what the system refuses is a FileError.
class XMPWriter {
public:
    /// Writes the template of a new sidecar, with an empty caption, over whatever is there.
    void createEmptySidecar(const QString& sidecar) const;

    /// Writes that template only if there is no sidecar. False when there is one by now: another program may
    /// write it at any moment, and what it knows of the picture must not be lost.
    bool createMissingSidecar(const QString& sidecar) const;

    /// All that is known of the image from one opening. Dates in element form become days in the given zone.
    MetadataReading readSidecar(const QString& sidecar, const QTimeZone& zone) const;

    /// Writes that template into a sidecar that is there and empty. Throws FileError, also when something is
    /// in it by then.
    void fillEmptySidecar(const QString& sidecar) const;

    /// The caption as it stands in x-default, untrimmed; nothing when the sidecar has none.
    std::optional<QString> readDefaultCaption(const QString& sidecar) const;

    /// Puts the caption into the existing sidecar and leaves all else in it as it was. On any failure the
    /// old file is intact. Also throws XMPError::writeFailed.
    void writeDefaultCaption(const QString& caption, const QString& sidecar) const;

    /// The same, only over what the caption was made from: throws OvertakenError where the sidecar or the
    /// image's picture is another by now.
    void writeDefaultCaption(const QString& caption, const QString& sidecar, const QString& image,
                             const CaptionSource& source) const;

    /// Finds out whether a caption could be put into the sidecar's text, and changes nothing. Throws what
    /// writeDefaultCaption() would.
    void requireEditableSidecar(const QString& sidecar) const;

    /// What is known of place, event and date. Dates in element form become days in the given zone.
    XMPContext readContext(const QString& sidecar, const QTimeZone& zone) const;

    // The same of a JPEG image, whose metadata are in the file itself. An image that cannot be opened is
    // XMPError::fileMissing; one that is no JPEG has no metadata.

    /// All that is known of the image from one opening. Dates become days in the given zone.
    MetadataReading readEmbedded(const QString& image, const QTimeZone& zone) const;

    /// The caption, trimmed. Empty when the file's IPTC data have none, which a photographer may have
    /// cleared; nothing when it has no such data and no other field with a caption.
    std::optional<QString> readEmbeddedCaption(const QString& image, PlainLog& log) const;

    /// What is known of place, event and date. Dates become days in the given zone.
    XMPContext readEmbeddedContext(const QString& image, const QTimeZone& zone, PlainLog& log) const;

    /// Puts the caption into the image's metadata and leaves the compressed picture and all else as it was.
    /// With a source, only over what the caption was made from: throws OvertakenError where metadata or
    /// picture are others by now, and a picture that was decoded for its rendition is not decoded again. On
    /// any failure the old file is intact. Returns what the new one looks like. Throws XMPError::parseFailed
    /// when the picture cannot be decoded and XMPError::writeFailed when the file cannot be changed without
    /// harm or not be replaced.
    FileStamp writeEmbeddedCaption(const QString& caption, const QString& image, PlainLog& log,
                                   const std::optional<CaptionSource>& source = {}) const;
};

} // namespace ostrelle
