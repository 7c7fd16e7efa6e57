// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/xml/XmlDocument.h"

#include "metadata/xml/XmlCharacterData.h"
#include "metadata/xml/XmlParser.h"

#include <algorithm>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

bool matches(QByteArrayView localName, QByteArrayView uri, QByteArrayView wantedName,
             std::optional<QByteArrayView> wantedUri) {
    return localName == wantedName && (!wantedUri || uri == *wantedUri);
}

} // namespace

XmlDocument XmlDocument::parse(QByteArray bytes) {
    XmlDocument document;
    document.m_bytes = std::move(bytes);
    XmlParser(document).run();
    return document;
}

XmlElement XmlDocument::root() const {
    return m_nodes.empty() ? XmlElement() : XmlElement(*this, 0);
}

std::vector<bool> XmlDocument::matchingNames(QByteArrayView localName,
                                             std::optional<QByteArrayView> namespaceUri) const {
    std::vector<bool> wanted;
    wanted.reserve(m_names.size());
    for (const Name& name : m_names) {
        wanted.push_back(matches(name.localName, name.namespaceUri, localName, namespaceUri));
    }
    return wanted;
}

QList<XmlElement> XmlDocument::find(QByteArrayView localName,
                                    std::optional<QByteArrayView> namespaceUri) const {
    const std::vector<bool> wanted = matchingNames(localName, namespaceUri);
    QList<XmlElement> found;
    for (quint32 index = 0; index < m_nodes.size(); ++index) {
        if (wanted[m_nodes[index].name]) {
            found.append(XmlElement(*this, index));
        }
    }
    return found;
}

XmlElement XmlDocument::findFirst(QByteArrayView localName,
                                  std::optional<QByteArrayView> namespaceUri) const {
    const std::vector<bool> wanted = matchingNames(localName, namespaceUri);
    for (quint32 index = 0; index < m_nodes.size(); ++index) {
        if (wanted[m_nodes[index].name]) {
            return {*this, index};
        }
    }
    return {};
}

QByteArrayView XmlElement::localName() const {
    return m_document->m_names[m_document->m_nodes[m_index].name].localName;
}

QByteArrayView XmlElement::namespaceUri() const {
    return m_document->m_names[m_document->m_nodes[m_index].name].namespaceUri;
}

QByteArray XmlElement::name() const {
    const XmlDocument::Name& name = m_document->m_names[m_document->m_nodes[m_index].name];
    return name.prefix.isEmpty() ? name.localName : name.prefix + ':' + name.localName;
}

bool XmlElement::is(QByteArrayView localName, QByteArrayView namespaceUri) const {
    return matches(this->localName(), this->namespaceUri(), localName, namespaceUri);
}

XmlElement XmlElement::parent() const {
    const quint32 index = m_document->m_nodes[m_index].parent;
    return index == XmlDocument::none ? XmlElement() : XmlElement(*m_document, index);
}

XmlElement XmlElement::firstChild() const {
    const quint32 index = m_document->m_nodes[m_index].firstChild;
    return index == XmlDocument::none ? XmlElement() : XmlElement(*m_document, index);
}

XmlElement XmlElement::nextSibling() const {
    const quint32 index = m_document->m_nodes[m_index].nextSibling;
    return index == XmlDocument::none ? XmlElement() : XmlElement(*m_document, index);
}

XmlElement XmlElement::child(QByteArrayView localName, std::optional<QByteArrayView> namespaceUri) const {
    XmlElement child = firstChild();
    while (child && !matches(child.localName(), child.namespaceUri(), localName, namespaceUri)) {
        child = child.nextSibling();
    }
    return child;
}

QList<XmlElement> XmlElement::children(QByteArrayView localName,
                                       std::optional<QByteArrayView> namespaceUri) const {
    QList<XmlElement> found;
    for (XmlElement child = firstChild(); child; child = child.nextSibling()) {
        if (matches(child.localName(), child.namespaceUri(), localName, namespaceUri)) {
            found.append(child);
        }
    }
    return found;
}

QString XmlElement::text() const {
    const XmlDocument::Node& node = m_document->m_nodes[m_index];
    return QString::fromUtf8(
        QByteArrayView(m_document->m_text).sliced(node.textBegin, node.textEnd - node.textBegin));
}

QList<XmlSpan> XmlElement::textSpans() const {
    const auto search = [this](qsizetype begin, qsizetype end) {
        return characterDataIn(m_document->m_bytes, {begin, end}, m_document->m_encoding);
    };
    QList<XmlSpan> found;
    qsizetype begin = content().begin;
    for (XmlElement child = firstChild(); child; child = child.nextSibling()) {
        found += search(begin, child.span().begin);
        begin = child.span().end;
    }
    return found += search(begin, content().end);
}

QList<XmlAttribute> XmlElement::attributes() const {
    XmlStartTagReader reader(m_document->m_bytes, startTag(), m_document->m_encoding);
    const std::vector<quint32>& namespaces = m_document->m_attributeNamespaces;
    std::size_t place = m_document->m_nodes[m_index].firstNamespace;
    QList<XmlAttribute> all;
    while (std::optional<XmlAttribute> attribute = reader.next()) {
        if (attribute->hasNamespace() && place < namespaces.size()) {
            attribute->m_namespaceUri = m_document->m_namespaces[namespaces[place++]];
        }
        all.append(*attribute);
    }
    return all;
}

std::optional<QString> XmlElement::attribute(QStringView name) const {
    XmlStartTagReader reader(m_document->m_bytes, startTag(), m_document->m_encoding);
    while (const std::optional<XmlAttribute> attribute = reader.next()) {
        if (attribute->isCalled(name)) {
            return attribute->value();
        }
    }
    return std::nullopt;
}

std::optional<XmlAttribute> XmlElement::attribute(QStringView localName, QByteArrayView namespaceUri) const {
    const QList<XmlAttribute> all = attributes();
    const auto found = std::ranges::find_if(all, [&](const XmlAttribute& attribute) {
        return attribute.namespaceUri() == namespaceUri && attribute.hasLocalName(localName);
    });
    return found == all.end() ? std::nullopt : std::optional(*found);
}

std::optional<QString> XmlElement::resolvePrefix(const QString& prefix) const {
    const QString declaration = u"xmlns:"_s + prefix;
    for (XmlElement element = *this; element; element = element.parent()) {
        if (const std::optional<QString> uri = element.attribute(declaration)) {
            return uri;
        }
    }
    return std::nullopt;
}

bool XmlElement::isEmptyTag() const {
    const XmlDocument::Node& node = m_document->m_nodes[m_index];
    return node.endTagBegin == node.endTagEnd;
}

XmlSpan XmlElement::span() const {
    const XmlDocument::Node& node = m_document->m_nodes[m_index];
    return {node.startTagBegin, node.endTagEnd};
}

XmlSpan XmlElement::startTag() const {
    const XmlDocument::Node& node = m_document->m_nodes[m_index];
    return {node.startTagBegin, node.startTagEnd};
}

XmlSpan XmlElement::content() const {
    const XmlDocument::Node& node = m_document->m_nodes[m_index];
    return {node.startTagEnd, node.endTagBegin};
}

} // namespace ostrelle
