// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/xml/XmlEncoding.h"

#include <QByteArrayView>
#include <QString>
#include <QStringView>
#include <optional>

namespace ostrelle {

/// A range of byte offsets into a document.
struct XmlSpan {
    qsizetype begin = 0;
    qsizetype end = 0;

    qsizetype size() const { return end - begin; }
};

/// A view of one attribute in its start tag. The document's bytes must outlive it. Text is decoded only on
/// request, as an element may have hundreds of attributes.
class XmlAttribute {
public:
    /// True when the qualified name, as written, is this ASCII text, such as "rdf:about".
    bool isCalled(QStringView name) const { return isSame(m_name, name); }
    /// True when the name without its prefix is this ASCII text.
    bool hasLocalName(QStringView name) const { return isSame({m_localNameBegin, m_name.end}, name); }
    /// Empty when the name has no prefix.
    QByteArrayView namespaceUri() const { return m_namespaceUri; }
    /// The value, normalized and with its references resolved.
    QString value() const;

    /// The leading blanks, the name and the quoted value.
    XmlSpan span() const { return m_span; }
    /// The span between the quotes.
    XmlSpan valueSpan() const { return m_value; }

private:
    friend class XmlElement;
    friend class XmlStartTagReader;

    XmlAttribute(QByteArrayView bytes, XmlEncoding encoding) : m_bytes(bytes), m_encoding(encoding) {}
    /// True for a name with a prefix, unless it declares one itself.
    bool hasNamespace() const;
    bool isSame(XmlSpan span, QStringView text) const;
    QString decoded(XmlSpan span) const;

    QByteArrayView m_bytes;
    XmlEncoding m_encoding;
    XmlSpan m_span;
    XmlSpan m_name;
    qsizetype m_localNameBegin = 0;
    XmlSpan m_value;
    QByteArrayView m_namespaceUri;
};

/// Walks over the attributes of a start tag. Never looks past the end of the tag, and stops before an
/// incomplete attribute.
class XmlStartTagReader {
public:
    /// `tag` is the span of the start tag in the document's bytes, which must outlive the reader.
    XmlStartTagReader(QByteArrayView bytes, XmlSpan tag, XmlEncoding encoding);

    std::optional<XmlAttribute> next();

private:
    char16_t unit() const { return unitAt(m_bytes, m_at, m_encoding); }
    void skipBlanks();
    void skipName();
    /// False when the unit is not in the rest of the tag.
    bool skipPast(char16_t unit);

    QByteArrayView m_bytes;
    XmlEncoding m_encoding;
    qsizetype m_unitSize;
    qsizetype m_at;
    qsizetype m_end;        ///< whole units from the start
    qsizetype m_colon = -1; ///< in the name just read
};

} // namespace ostrelle
