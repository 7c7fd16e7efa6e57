// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringList>
#include <optional>

namespace ostrelle {

class XmlDocument;

/// The packet itself in the content of its segment, which some writers fill up with NULs.
QByteArrayView packetText(QByteArrayView content);

/// A property of an XMP packet, read as an XMP reader does: as an attribute of the rdf:Description or as an
/// element with text, or with a list of which each item is a value. An Alt gives x-default or else its first
/// item only. Untrimmed; nothing when the packet has no such property.
std::optional<QStringList> packetValues(const XmlDocument& packet, QByteArrayView localName,
                                        QByteArrayView namespaceUri);

/// The packet with the caption in each dc:description that it has, and all else the same bytes; nothing when
/// it has none. Throws EditRefusal and XmlError.
std::optional<QByteArray> withPacketCaption(const XmlDocument& packet, const QString& caption);

/// The packet in at most that many bytes: only the blanks that writers put at its end may go.
QByteArray withLessPadding(const QByteArray& packet, qsizetype maximumSize);

} // namespace ostrelle
