// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/xml/XmlDocument.h"

#include <map>
#include <optional>

namespace ostrelle {

/// Gathers changes to a parsed document and applies them to its bytes; all other bytes stay the same. Takes
/// markup as text and writes it in the document's encoding.
class XmlEditor {
public:
    /// The document must outlive the editor.
    explicit XmlEditor(const XmlDocument& document) : m_document(document) {}

    /// Removes the element with everything below it. The blanks around it stay.
    void detach(const XmlElement& element);
    /// Removes the character data directly in the element, unless it is only blanks. Its comments and child
    /// elements stay.
    void removeText(const XmlElement& element);
    /// Replaces everything between the element's tags with markup.
    void setContent(const XmlElement& element, const QString& markup);
    /// Adds markup after the start tag, before all other content.
    void insertFirst(const XmlElement& element, const QString& markup);
    /// Adds markup before the end tag, after all other content.
    void append(const XmlElement& element, const QString& markup);
    /// Adds an attribute as markup, such as `rdf:about=""`, after the others.
    void addAttribute(const XmlElement& element, const QString& markup);
    void removeAttribute(const XmlAttribute& attribute);
    void setAttributeValue(const XmlAttribute& attribute, const QString& markup);
    /// Writes "no" where the declaration says standalone="yes".
    void clearStandalone();

    /// The document's bytes with all changes. Changes inside a detached element go with it.
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
