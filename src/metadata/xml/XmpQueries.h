// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/xml/XmlDocument.h"

#include <optional>

namespace ostrelle {

/// The first child element that is called rdf:Description, in any namespace, of the first RDF of the document
/// and has an attribute "about", with any prefix, that is empty.
XmlElement describedSubject(const XmlDocument& document);

/// The first descendant of the local name, depth first.
XmlElement findChildElement(QByteArrayView localName, const XmlElement& element);

/// The first child that is written as "rdf:Alt", whatever namespace that is.
XmlElement childWrittenAsAlt(const XmlElement& element);

/// The caption of a sidecar, untrimmed: the x-default text of the first dc:description that has one. Where
/// there is none, that of the document's first rdf:Alt, whatever it is about.
std::optional<QString> defaultCaption(const XmlDocument& document);

/// The untrimmed text of the item for just this language in an rdf:Alt, or in the rdf:Alt of a description.
/// No other language and no item without a language stands in for it.
std::optional<QString> findAltLangValue(const XmlElement& element, QStringView language);

/// The trimmed text of the first element of the name; nothing when that one is empty, whatever others hold.
std::optional<QString> firstElementText(const XmlDocument& document, QByteArrayView localName,
                                        QByteArrayView namespaceUri);

/// The text without blanks and line ends around it, or nothing when nothing remains.
std::optional<QString> trimmedOrNothing(const QString& text);

} // namespace ostrelle
