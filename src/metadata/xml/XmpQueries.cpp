// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/xml/XmpQueries.h"

#include "metadata/xml/XmpNamespaces.h"

#include <algorithm>
#include <set>

namespace ostrelle {

namespace {

bool isCalled(const XmlElement& element, QByteArrayView lowerCaseName, QByteArrayView prefixedName) {
    return element.localName().toByteArray().toLower() == lowerCaseName ||
           element.name().contains(prefixedName);
}

bool hasEmptyAbout(const XmlElement& element) {
    return std::ranges::any_of(element.attributes(), [](const XmlAttribute& attribute) {
        return attribute.hasLocalName(u"about") && attribute.valueSpan().size() == 0;
    });
}

/// The child written as "rdf:Alt", or else the first Alt below. `alts` are those of the whole document, so
/// that captions within captions are not searched over and over.
XmlElement altBelow(const XmlElement& element, const QList<XmlElement>& alts) {
    if (const XmlElement child = childWrittenAsAlt(element)) {
        return child;
    }
    const auto next = std::ranges::upper_bound(alts, element.index(), {}, &XmlElement::index);
    const bool isBelow = next != alts.end() && next->span().begin < element.span().end;
    return isBelow ? *next : XmlElement();
}

std::optional<QString> itemInLanguage(const XmlElement& alt, QStringView language) {
    for (XmlElement item = alt.firstChild(); item; item = item.nextSibling()) {
        if (isCalled(item, "li", ":li") && item.attribute(u"xml:lang") == language) {
            return item.text();
        }
    }
    return std::nullopt;
}

} // namespace

XmlElement describedSubject(const XmlDocument& document) {
    const XmlElement rdf = document.findFirst("RDF");
    if (!rdf) {
        return {};
    }
    const QList<XmlElement> descriptions = rdf.children("Description");
    const auto found = std::ranges::find_if(descriptions, hasEmptyAbout);
    return found == descriptions.end() ? XmlElement() : *found;
}

XmlElement findChildElement(QByteArrayView localName, const XmlElement& element) {
    for (XmlElement child = element.firstChild(); child; child = child.nextSibling()) {
        if (child.localName() == localName) {
            return child;
        }
        if (const XmlElement deeper = findChildElement(localName, child)) {
            return deeper;
        }
    }
    return {};
}

XmlElement childWrittenAsAlt(const XmlElement& element) {
    XmlElement child = element.firstChild();
    while (child && child.name() != "rdf:Alt") {
        child = child.nextSibling();
    }
    return child;
}

std::optional<QString> defaultCaption(const XmlDocument& document) {
    constexpr QStringView language = u"x-default";
    const QList<XmlElement> alts = document.find("Alt");
    std::set<quint32> asked;
    for (const XmlElement& caption : document.find("description", xmp::dc)) {
        const XmlElement alt = altBelow(caption, alts);
        const bool isNew = alt && asked.insert(alt.index()).second;
        if (std::optional<QString> value = isNew ? itemInLanguage(alt, language) : std::nullopt) {
            return value;
        }
    }
    const XmlElement first = document.findFirst("Alt", xmp::rdf);
    return first ? itemInLanguage(first, language) : std::nullopt;
}

std::optional<QString> findAltLangValue(const XmlElement& element, QStringView language) {
    if (isCalled(element, "alt", ":Alt")) {
        return itemInLanguage(element, language);
    }
    if (isCalled(element, "description", ":description")) {
        const XmlElement child = childWrittenAsAlt(element);
        const XmlElement alt = child ? child : findChildElement("Alt", element);
        return alt ? itemInLanguage(alt, language) : std::nullopt;
    }
    return std::nullopt;
}

std::optional<QString> firstElementText(const XmlDocument& document, QByteArrayView localName,
                                        QByteArrayView namespaceUri) {
    const XmlElement element = document.findFirst(localName, namespaceUri);
    return element ? trimmedOrNothing(element.text()) : std::nullopt;
}

std::optional<QString> trimmedOrNothing(const QString& text) {
    const QString trimmed = text.trimmed();
    return trimmed.isEmpty() ? std::nullopt : std::optional(trimmed);
}

} // namespace ostrelle
