// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/xml/XmlAttribute.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

bool XmlAttribute::isSame(XmlSpan span, QStringView text) const {
    const qsizetype step = unitSize(m_encoding);
    if (span.size() != text.size() * step) {
        return false;
    }
    for (qsizetype index = 0; index < text.size(); ++index) {
        if (unitAt(m_bytes, span.begin + index * step, m_encoding) != text[index]) {
            return false;
        }
    }
    return true;
}

QString XmlAttribute::decoded(XmlSpan span) const {
    return decodeXml(m_bytes.sliced(span.begin, span.size()), m_encoding);
}

bool XmlAttribute::hasNamespace() const {
    const XmlSpan prefix{m_name.begin, m_localNameBegin - unitSize(m_encoding)};
    return m_localNameBegin != m_name.begin && !isSame(prefix, u"xmlns");
}

/// Literal line ends and tabs become spaces (XML 1.0, section 3.3.3); character references stay.
QString XmlAttribute::value() const {
    QString text = decoded(m_value);
    text.replace("\r\n"_L1, " "_L1);
    for (QChar& character : text) {
        if (isXmlBlank(character.unicode())) {
            character = u' ';
        }
    }
    return resolveXmlReferences(text);
}

XmlStartTagReader::XmlStartTagReader(QByteArrayView bytes, XmlSpan tag, XmlEncoding encoding)
    : m_bytes(bytes)
    , m_encoding(encoding)
    , m_unitSize(unitSize(encoding))
    , m_at(tag.begin)
    , m_end(tag.begin + tag.size() / m_unitSize * m_unitSize) {
    skipName(); // the element's own, with its bracket
}

std::optional<XmlAttribute> XmlStartTagReader::next() {
    XmlAttribute attribute(m_bytes, m_encoding);
    attribute.m_span.begin = m_at;
    skipBlanks();
    attribute.m_name.begin = m_at;
    skipName();
    attribute.m_name.end = m_at;
    if (attribute.m_name.size() == 0) {
        return std::nullopt;
    }
    attribute.m_localNameBegin = m_colon < 0 ? attribute.m_name.begin : m_colon + m_unitSize;
    skipPast(u'=');
    skipBlanks();
    if (m_at >= m_end) {
        return std::nullopt;
    }
    const char16_t quote = unit();
    m_at += m_unitSize;
    attribute.m_value.begin = m_at;
    if (!skipPast(quote)) {
        return std::nullopt;
    }
    attribute.m_value.end = m_at - m_unitSize;
    attribute.m_span.end = m_at;
    return attribute;
}

void XmlStartTagReader::skipBlanks() {
    while (m_at < m_end && isXmlBlank(unit())) {
        m_at += m_unitSize;
    }
}

void XmlStartTagReader::skipName() {
    m_colon = -1;
    for (; m_at < m_end; m_at += m_unitSize) {
        const char16_t here = unit();
        if (isXmlBlank(here) || here == u'=' || here == u'>' || here == u'/') {
            return;
        }
        if (here == u':') {
            m_colon = m_at;
        }
    }
}

bool XmlStartTagReader::skipPast(char16_t wanted) {
    while (m_at < m_end && unit() != wanted) {
        m_at += m_unitSize;
    }
    const bool isThere = m_at < m_end;
    m_at += isThere ? m_unitSize : 0;
    return isThere;
}

} // namespace ostrelle
