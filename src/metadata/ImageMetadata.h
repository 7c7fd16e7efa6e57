// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/bytes/ImageFile.h"
#include "metadata/facts/ImageFacts.h"
#include "metadata/source/CaptionSource.h"
#include "platform/PlainLog.h"

#include <QString>
#include <QTimeZone>
#include <optional>

namespace ostrelle {

/// The metadata of one image, inside a JPEG or in the sidecar of any other image. All access goes through
/// here; each operation opens the file anew and throws what XMPWriter throws. For worker threads.
class ImageMetadata {
public:
    explicit ImageMetadata(QString image);

    /// True for a JPEG.
    bool isEmbedded() const { return m_isEmbedded; }
    /// The file that holds the metadata, if a sidecar has its usual name. Does not look at the disk.
    QString expectedPlace() const;
    /// The path of the existing sidecar, or of the one to be made; for a JPEG too. Looks at the disk.
    QString sidecar() const;

    /// True for an image that needs a sidecar and has none.
    bool lacksSidecar() const;
    /// Makes the sidecar of an image that needs one and has none. True when it made one.
    bool provideSidecar() const;
    /// Replaces a sidecar that cannot be read with a new one. The old one stays beside it under a name with
    /// ".unreadable" added, and a number if needed. Does nothing for a JPEG.
    void replaceUnreadableSidecar() const;

    /// All facts from one opening. Dates become days in the zone.
    MetadataReading read(const QTimeZone& zone) const;

    /// The same from the opened image, and whether a caption could be written. Changes nothing.
    EditableReading readEditable(ImageFile& image, const QTimeZone& zone) const;

    /// Writes the caption if the image is still what the caption was made from; otherwise throws
    /// OvertakenError. Sets a sidecar's modification time to now even if nothing in it changes. The result is
    /// true as of the write, whatever has happened to the file since.
    WrittenCaption writeCaption(const QString& caption, const CaptionSource& source, PlainLog& log) const;

private:
    QString m_image;
    bool m_isEmbedded;
};

} // namespace ostrelle
