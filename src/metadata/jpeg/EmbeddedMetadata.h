// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/bytes/ImageFile.h"

#include <QByteArrayView>
#include <QMap>
#include <QString>
#include <QStringList>
#include <optional>

namespace ostrelle {

/// The texts that a JPEG file holds besides its picture. Untrimmed; values that are not text are missing.
struct EmbeddedMetadata {
    struct Tiff {
        std::optional<QString> imageDescription;
        std::optional<QString> dateTime;
        std::optional<QString> copyright;
        std::optional<QString> artist;
    };
    struct Exif {
        std::optional<QString> userComment;
        std::optional<QString> dateTimeOriginal;
    };

    /// The values of each IPTC field by name, such as "Caption/Abstract". Fields missing from the IPTC
    /// records come from the XMP packet. Empty when the file has no IPTC data in either form.
    QMap<QString, QStringList> iptc;
    std::optional<QString> contactName;   ///< of the creator, from the XMP packet
    std::optional<QString> packetCaption; ///< from the XMP packet, even if the IPTC records have one
    std::optional<Tiff> tiff;             ///< nothing when the file has no TIFF directory
    std::optional<Exif> exif;             ///< nothing when the file has no EXIF directory

    /// The first value of an IPTC field.
    std::optional<QString> iptcText(const QString& name) const;
};

/// Reads the metadata before a JPEG's picture. Damaged parts count as missing. Nothing when the bytes are not
/// a JPEG.
std::optional<EmbeddedMetadata> parseEmbeddedMetadata(QByteArrayView file);

/// The same for a file; reads only its front. Throws XMPError::fileMissing when it cannot be opened.
std::optional<EmbeddedMetadata> readEmbeddedMetadata(const QString& path);

/// The file at its start. Throws XMPError::fileMissing when it cannot be opened.
QFile& openForReading(ImageFile& image);

} // namespace ostrelle
