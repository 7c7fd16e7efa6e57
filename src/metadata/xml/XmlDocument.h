// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/xml/XmlAttribute.h"
#include "metadata/xml/XmlEncoding.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>
#include <optional>
#include <vector>

namespace ostrelle {

class XmlDocument;

/// A view of one element of a document, which must outlive it. The null element stands for "none".
class XmlElement {
public:
    XmlElement() = default;
    XmlElement(const XmlDocument& document, quint32 index) : m_document(&document), m_index(index) {}

    explicit operator bool() const { return m_document != nullptr; }
    friend bool operator==(const XmlElement&, const XmlElement&) = default;

    quint32 index() const { return m_index; }
    QByteArrayView localName() const;
    QByteArrayView namespaceUri() const;
    /// The qualified name as written: "rdf:Alt".
    QByteArray name() const;
    bool is(QByteArrayView localName, QByteArrayView namespaceUri) const;

    XmlElement parent() const;
    XmlElement firstChild() const;
    XmlElement nextSibling() const;
    /// The first child of this name, in any namespace unless one is given.
    XmlElement child(QByteArrayView localName, std::optional<QByteArrayView> namespaceUri = {}) const;
    /// All children of this name, in any namespace unless one is given.
    QList<XmlElement> children(QByteArrayView localName,
                               std::optional<QByteArrayView> namespaceUri = {}) const;

    /// All character data below the element, joined.
    QString text() const;
    /// The spans of character data between the element's children, except those of blanks only.
    QList<XmlSpan> textSpans() const;
    QList<XmlAttribute> attributes() const;
    /// The value of the attribute of this qualified name.
    std::optional<QString> attribute(QStringView name) const;
    /// The attribute of this name in this namespace.
    std::optional<XmlAttribute> attribute(QStringView localName, QByteArrayView namespaceUri) const;
    /// The URI that a prefix stands for at this element.
    std::optional<QString> resolvePrefix(const QString& prefix) const;

    bool isEmptyTag() const; ///< written as "<a/>"
    XmlSpan span() const;    ///< from "<" of the start tag to ">" of the end tag
    XmlSpan startTag() const;
    XmlSpan content() const; ///< between the tags; empty and after the tag for an empty tag

private:
    const XmlDocument* m_document = nullptr;
    quint32 m_index = 0;
};

/// A parsed XML document: the original bytes, and the position of each element in them. For looking things up
/// and editing the bytes in place, so that everything not edited stays as it was.
class XmlDocument {
public:
    /// The largest document that is read, in bytes.
    static constexpr qint64 maximumSize = qint64{64} * 1024 * 1024;
    static constexpr int maximumDepth = 1000;
    static constexpr std::size_t maximumElements = 1'000'000;
    static constexpr std::size_t maximumNamespaces = 100'000;

    /// Parses UTF-8, UTF-16, ISO-8859-1 or US-ASCII. Throws XmlError when the bytes are not well formed and
    /// namespace-well-formed, declare a document type or exceed one of the limits above.
    static XmlDocument parse(QByteArray bytes);

    const QByteArray& bytes() const { return m_bytes; }
    XmlEncoding encoding() const { return m_encoding; }
    /// The null element when the document has no root.
    XmlElement root() const;
    /// Every element of this name in document order, in any namespace unless one is given.
    QList<XmlElement> find(QByteArrayView localName, std::optional<QByteArrayView> namespaceUri = {}) const;
    XmlElement findFirst(QByteArrayView localName, std::optional<QByteArrayView> namespaceUri = {}) const;
    /// The span of the value in the declaration's standalone="yes".
    std::optional<XmlSpan> standaloneYes() const { return m_standaloneYes; }

private:
    friend class XmlElement;
    friend class XmlParser;

    static constexpr quint32 none = 0xFFFFFFFF;

    struct Name {
        QByteArray namespaceUri;
        QByteArray localName;
        QByteArray prefix;
    };
    /// 44 bytes each, to limit the memory for the largest document.
    struct Node {
        quint32 name = 0;
        quint32 parent = none;
        quint32 firstChild = none;
        quint32 nextSibling = none;
        quint32 startTagBegin = 0;
        quint32 startTagEnd = 0;
        quint32 endTagBegin = 0;
        quint32 endTagEnd = 0;
        quint32 textBegin = 0;
        quint32 textEnd = 0;
        quint32 firstNamespace = 0; ///< of its attributes with a prefix
    };

    std::vector<bool> matchingNames(QByteArrayView localName,
                                    std::optional<QByteArrayView> namespaceUri) const;

    QByteArray m_bytes;
    XmlEncoding m_encoding = XmlEncoding::utf8;
    std::optional<XmlSpan> m_standaloneYes;
    std::vector<Name> m_names;
    std::vector<Node> m_nodes; ///< in document order
    std::vector<QByteArray> m_namespaces;
    std::vector<quint32> m_attributeNamespaces; ///< of each attribute with a prefix, in document order
    QByteArray m_text; ///< all character data in UTF-8; each element has a range of it
};

} // namespace ostrelle
