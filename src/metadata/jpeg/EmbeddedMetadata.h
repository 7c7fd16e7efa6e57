// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArrayView>
#include <QMap>
#include <QString>
#include <QStringList>
#include <optional>

namespace ostrelle {

/// The texts that a JPEG file holds beside its picture. Untrimmed; a value that is no text is missing.
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

    /// The values of each IPTC field by its name, such as "Caption/Abstract". What the IPTC records lack is
    /// taken from the XMP packet. Empty when the file has no IPTC data in either form.
    QMap<QString, QStringList> iptc;
    std::optional<QString> contactName;   ///< of the creator, from the XMP packet
    std::optional<QString> packetCaption; ///< in the XMP packet, also where the IPTC records have one
    std::optional<Tiff> tiff;             ///< nothing when the file has no TIFF directory
    std::optional<Exif> exif;             ///< nothing when the file has no EXIF directory

    /// The first value of an IPTC field.
    std::optional<QString> iptcText(const QString& name) const;
};

/// Reads the metadata in front of a JPEG's picture. What is damaged counts as missing. Nothing when the bytes
/// are no JPEG.
std::optional<EmbeddedMetadata> parseEmbeddedMetadata(QByteArrayView file);

/// The same of a file, of which only the front is read. Throws XMPError::fileMissing when it cannot be
/// opened.
std::optional<EmbeddedMetadata> readEmbeddedMetadata(const QString& path);

} // namespace ostrelle
