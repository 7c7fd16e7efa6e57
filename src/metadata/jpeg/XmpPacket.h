// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringList>
#include <optional>

namespace ostrelle {

class XmlDocument;

/// The packet in the content of its segment, which some writers pad with NULs.
QByteArrayView packetText(QByteArrayView content);

/// A property of an XMP packet as an XMP reader sees it: an attribute of the rdf:Description, an element with
/// text, or a list whose items are the values. An Alt yields only x-default, or else its first item.
/// Untrimmed; nothing when the packet has no such property.
std::optional<QStringList> packetValues(const XmlDocument& packet, QByteArrayView localName,
                                        QByteArrayView namespaceUri);

/// The packet with the caption in each of its dc:descriptions and all other bytes unchanged; nothing when it
/// has none. Throws EditRefusal and XmlError.
std::optional<QByteArray> withPacketCaption(const XmlDocument& packet, const QString& caption);

/// Shortens the packet to at most that many bytes, if the blanks that writers pad it with allow that.
QByteArray withLessPadding(const QByteArray& packet, qsizetype maximumSize);

} // namespace ostrelle
