// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/xml/XmlDocument.h"

#include <map>

namespace ostrelle {

/// Gathers changes to a parsed document and applies them to its bytes. All that is not changed stays the
/// same bytes. Markup is handed in as text and written in the document's encoding.
class XmlEditor {
public:
    /// The document has to outlive the editor.
    explicit XmlEditor(const XmlDocument& document) : m_document(document) {}

    /// Takes the element and all below it out. The blanks around it stay.
    void detach(const XmlElement& element);
    /// Takes the character data directly in the element out, unless they are nothing but blanks. Its comments
    /// and child elements stay.
    void removeText(const XmlElement& element);
    /// Puts markup in place of everything between the element's tags.
    void setContent(const XmlElement& element, const QString& markup);
    /// Adds markup behind the start tag, ahead of all other content.
    void insertFirst(const XmlElement& element, const QString& markup);
    /// Adds markup in front of the end tag, behind all other content.
    void append(const XmlElement& element, const QString& markup);
    /// Adds an attribute as markup, such as `rdf:about=""`, behind the others.
    void addAttribute(const XmlElement& element, const QString& markup);
    void removeAttribute(const XmlAttribute& attribute);
    void setAttributeValue(const XmlAttribute& attribute, const QString& markup);
    /// Writes "no" where the declaration says standalone="yes".
    void clearStandalone();

    /// The document's bytes with all changes. What was changed inside a detached element is gone with it.
    QByteArray result() const;

private:
    struct Change {
        QString attributes;
        QString first;
        QString last;
        std::optional<QString> content;
    };
    struct Splice {
        XmlSpan span;
        QString markup;
    };

    void splice(XmlSpan span, const QString& markup) { m_splices.push_back({span, markup}); }
    void appendSplices(const XmlElement& element, const Change& change, std::vector<Splice>& splices) const;

    const XmlDocument& m_document;
    std::map<quint32, Change> m_changes; ///< by the element's index
    std::vector<Splice> m_splices;
};

} // namespace ostrelle
