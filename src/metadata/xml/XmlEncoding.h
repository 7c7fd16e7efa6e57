// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringView>

namespace ostrelle {

/// How an XML document encodes characters as bytes.
enum class XmlEncoding { utf8, utf16LittleEndian, utf16BigEndian, latin1, ascii };

/// Bytes of one code unit: 2 for UTF-16, otherwise 1.
qsizetype unitSize(XmlEncoding encoding);

/// The code unit at the byte offset.
char16_t unitAt(QByteArrayView bytes, qsizetype offset, XmlEncoding encoding);

/// True for the four characters that are white space in XML.
bool isXmlBlank(char16_t unit);

QString decodeXml(QByteArrayView bytes, XmlEncoding encoding);

/// Markup in the document's encoding. Characters that the encoding lacks become character references.
QByteArray encodeXml(QStringView markup, XmlEncoding encoding);

/// The text without the characters that XML 1.0 cannot hold in any form (its production 2, Char): most
/// control characters, U+FFFE, U+FFFF and lone surrogates.
QString withoutForbiddenCharacters(QStringView text);

/// Escapes text as element content: "&", "<", ">" and the carriage return, which readers would turn into a
/// line feed. The text must be free of forbidden characters.
QString escapeXmlText(QStringView text);

/// Resolves character references and the five predefined entities.
QString resolveXmlReferences(QStringView markup);

} // namespace ostrelle
