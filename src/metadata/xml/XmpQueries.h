// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/xml/XmlDocument.h"

#include <optional>

namespace ostrelle {

/// The first child of the document's first RDF that is called rdf:Description, in any namespace, and has an
/// empty attribute "about", with any prefix.
XmlElement describedSubject(const XmlDocument& document);

/// The first descendant of the local name, depth first.
XmlElement findChildElement(QByteArrayView localName, const XmlElement& element);

/// The first child written as "rdf:Alt", whatever its namespace.
XmlElement childWrittenAsAlt(const XmlElement& element);

/// The caption of a sidecar, untrimmed: the x-default text of the first dc:description that has one. Failing
/// that, the one in the document's first rdf:Alt, whatever it is about.
std::optional<QString> defaultCaption(const XmlDocument& document);

/// The untrimmed text in exactly this language in an rdf:Alt, or in the rdf:Alt of a description. Other
/// languages and items without a language do not count.
std::optional<QString> findAltLangValue(const XmlElement& element, QStringView language);

/// The trimmed text of the first element of this name; nothing when it is empty, whatever the others hold.
std::optional<QString> firstElementText(const XmlDocument& document, QByteArrayView localName,
                                        QByteArrayView namespaceUri);

/// The trimmed text, or nothing when nothing remains.
std::optional<QString> trimmedOrNothing(const QString& text);

} // namespace ostrelle
