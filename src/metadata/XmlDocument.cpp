// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/XmlDocument.h"

#include "metadata/XmlParser.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

bool isBlank(char16_t unit) {
    return unit == u' ' || unit == u'\t' || unit == u'\n' || unit == u'\r';
}

/// Walks over the attributes of a start tag that is known to be well formed.
class StartTagReader {
public:
    StartTagReader(const QByteArray& bytes, XmlSpan tag, XmlEncoding encoding)
        : m_bytes(bytes), m_encoding(encoding), m_unit(unitSize(encoding)), m_at(tag.begin), m_end(tag.end) {
        skipName();
    }

    std::optional<XmlAttribute> next() {
        XmlAttribute attribute;
        attribute.span.begin = m_at;
        skipBlanks();
        const qsizetype nameBegin = m_at;
        skipName();
        if (m_at == nameBegin || m_at >= m_end) {
            return std::nullopt;
        }
        attribute.name = decoded({nameBegin, m_at});
        skipPast(u'=');
        skipBlanks();
        const char16_t quote = unitAt(m_bytes, m_at, m_encoding);
        attribute.valueSpan.begin = m_at + m_unit;
        m_at += m_unit;
        skipPast(quote);
        attribute.valueSpan.end = m_at - m_unit;
        attribute.span.end = m_at;
        attribute.value = normalized(decoded(attribute.valueSpan));
        return attribute;
    }

private:
    bool isAt(char16_t unit) const { return unitAt(m_bytes, m_at, m_encoding) == unit; }
    void skipBlanks() {
        while (m_at < m_end && isBlank(unitAt(m_bytes, m_at, m_encoding))) {
            m_at += m_unit;
        }
    }
    void skipName() {
        while (m_at < m_end && !isBlank(unitAt(m_bytes, m_at, m_encoding)) && !isAt(u'=') && !isAt(u'>') &&
               !isAt(u'/')) {
            m_at += m_unit;
        }
    }
    void skipPast(char16_t unit) {
        while (m_at < m_end && !isAt(unit)) {
            m_at += m_unit;
        }
        m_at += m_unit;
    }
    QString decoded(XmlSpan span) const {
        return decodeXml(QByteArrayView(m_bytes).sliced(span.begin, span.size()), m_encoding);
    }
    /// Attribute-value normalization (XML 1.0, section 3.3.3): written line ends and tabs are blanks.
    static QString normalized(QString value) {
        value.replace("\r\n"_L1, " "_L1);
        for (QChar& character : value) {
            if (isBlank(character.unicode())) {
                character = u' ';
            }
        }
        return resolveXmlReferences(value);
    }

    const QByteArray& m_bytes;
    XmlEncoding m_encoding;
    qsizetype m_unit;
    qsizetype m_at;
    qsizetype m_end;
};

bool matches(QByteArrayView localName, QByteArrayView uri, QByteArrayView wantedName,
             std::optional<QByteArrayView> wantedUri) {
    return localName == wantedName && (!wantedUri || uri == *wantedUri);
}

} // namespace

QStringView XmlAttribute::localName() const {
    return QStringView(name).sliced(name.indexOf(u':') + 1);
}

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

QList<XmlAttribute> XmlElement::attributes() const {
    StartTagReader reader(m_document->m_bytes, startTag(), m_document->m_encoding);
    QList<XmlAttribute> all;
    while (std::optional<XmlAttribute> attribute = reader.next()) {
        all.append(std::move(*attribute));
    }
    return all;
}

std::optional<QString> XmlElement::attribute(QStringView name) const {
    StartTagReader reader(m_document->m_bytes, startTag(), m_document->m_encoding);
    while (std::optional<XmlAttribute> attribute = reader.next()) {
        if (attribute->name == name) {
            return attribute->value;
        }
    }
    return std::nullopt;
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
