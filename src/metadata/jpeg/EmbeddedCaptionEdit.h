// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

namespace ostrelle {

/// A JPEG file with the caption in its IPTC records, as TIFF image description, as EXIF user comment and in
/// the dc:description of its XMP packet, where that has one. The compressed picture, all other segments and
/// what follows the picture stay the same bytes, and within the segments all else stays what it was. Throws
/// EditRefusal when that cannot be had.
QByteArray withEmbeddedCaption(QByteArrayView file, const QString& caption);

/// Whether the file carries a C2PA manifest, whose signature any change makes invalid.
bool hasSignedManifest(QByteArrayView file);

} // namespace ostrelle
