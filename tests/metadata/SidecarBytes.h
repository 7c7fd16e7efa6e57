// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/XMPWriter.h"
#include "support/FileInFolder.h"

#include <gtest/gtest.h>

namespace ostrelle {

/// A sidecar in a folder of its own, for one test.
class SidecarFile : public FileInFolder {
public:
    explicit SidecarFile(const QByteArray& bytes) : FileInFolder(QStringLiteral("IMG_0001.xmp"), bytes) {}
};

/// A packet with this content in its rdf:RDF, on one line.
inline QByteArray packet(const QByteArray& content) {
    return "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"><rdf:RDF "
           "xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\""
           " xmlns:dc=\"http://purl.org/dc/elements/1.1/\" "
           "xmlns:photoshop=\"http://ns.adobe.com/photoshop/1.0/\""
           " xmlns:xmp=\"http://ns.adobe.com/xap/1.0/\" xmlns:exif=\"http://ns.adobe.com/exif/1.0/\""
           " xmlns:Iptc4xmpCore=\"http://iptc.org/std/Iptc4xmpCore/1.0/xmlns/\" xmlns:odd=\"urn:odd\">" +
           content + "</rdf:RDF></x:xmpmeta>";
}

/// The same, with one rdf:Description whose about is empty.
inline QByteArray subject(const QByteArray& fields, const QByteArray& attributes = {}) {
    return packet("<rdf:Description rdf:about=\"\"" + attributes + ">" + fields + "</rdf:Description>");
}

/// A caption as other tools write it, in items.
inline QByteArray described(const QByteArray& items) {
    return "<dc:description><rdf:Alt>" + items + "</rdf:Alt></dc:description>";
}

inline QByteArray item(const QByteArray& language, const QByteArray& text) {
    return "<rdf:li xml:lang='" + language + "'>" + text + "</rdf:li>";
}

inline MetadataReading readSidecar(const QByteArray& sidecar) {
    const SidecarFile file(sidecar);
    return XMPWriter().readSidecar(file.path(), QTimeZone::utc());
}

} // namespace ostrelle
