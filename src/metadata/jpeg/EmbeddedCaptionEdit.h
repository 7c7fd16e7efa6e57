// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

namespace ostrelle {

/// Returns the JPEG file with the caption in its IPTC records, as TIFF image description, as EXIF user
/// comment and, if it has one, in the dc:description of its XMP packet. The compressed picture, all other
/// segments and the trailer keep their bytes, and so does everything else in the edited segments. Throws
/// EditRefusal when that is impossible.
QByteArray withEmbeddedCaption(QByteArrayView file, const QString& caption);

/// True when the file carries a C2PA manifest; any change invalidates its signature.
bool hasSignedManifest(QByteArrayView file);

} // namespace ostrelle
