// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/facts/ImageFacts.h"
#include "metadata/source/CaptionSource.h"
#include "platform/PlainLog.h"

#include <QString>
#include <QTimeZone>
#include <optional>

namespace ostrelle {

/// The metadata of one image, wherever they are: inside a JPEG, or in the sidecar of any other image. The one
/// way to them; each operation opens the file anew and throws what XMPWriter throws. For worker threads.
class ImageMetadata {
public:
    explicit ImageMetadata(QString image);

    /// True for a JPEG.
    bool isEmbedded() const { return m_isEmbedded; }
    /// Where the sidecar is or would be, for a JPEG too. Looks at the disk.
    QString sidecar() const;

    /// Makes the sidecar of an image that needs one and has none. True when it is new.
    bool provideSidecar() const;
    /// Puts a new sidecar in the place of one that nobody may read, which stays beside it under another name:
    /// ".unreadable" is added to it, and a number if need be.
    void replaceUnreadableSidecar() const;

    /// All facts from one opening. Dates that are days are those of the zone.
    MetadataReading read(const QTimeZone& zone) const;

    /// The same, and whether a caption could be written. Changes nothing.
    EditableReading readEditable(const QTimeZone& zone) const;

    /// Writes the caption, if the image is still what the caption was made from: throws OvertakenError
    /// otherwise. A sidecar's modification time becomes now, even if nothing in it changes. What comes back
    /// holds as of the write, whatever has become of the file since.
    WrittenCaption writeCaption(const QString& caption, const CaptionSource& source, PlainLog& log) const;

private:
    QString m_image;
    bool m_isEmbedded;
};

} // namespace ostrelle
