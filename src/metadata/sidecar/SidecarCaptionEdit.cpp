// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/sidecar/SidecarCaptionEdit.h"

#include "metadata/facts/XMPError.h"
#include "metadata/xml/XmlEditor.h"
#include "metadata/xml/XmlError.h"
#include "metadata/xml/XmpNamespaces.h"
#include "metadata/xml/XmpQueries.h"

#include <algorithm>
#include <array>
#include <set>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// Both always get the same text: readers differ in which one they show.
constexpr std::array captionLanguages = {u"x-default", u"en-US"};

QString declaration(QStringView prefix, QByteArrayView uri) {
    return u"xmlns:%1=\"%2\""_s.arg(prefix, QLatin1StringView(uri));
}

// New elements declare their own namespaces, so that they mean the same wherever they end up.

QString itemMarkup(QStringView language, const QString& caption) {
    return u"<rdf:li %1 xml:lang=\"%2\">%3</rdf:li>"_s.arg(declaration(u"rdf", xmp::rdf), language,
                                                           escapeXmlText(caption));
}

QString altMarkup(const QString& caption) {
    QString items;
    for (const char16_t* language : captionLanguages) {
        items += itemMarkup(language, caption);
    }
    return u"<rdf:Alt %1>%2</rdf:Alt>"_s.arg(declaration(u"rdf", xmp::rdf), items);
}

QString captionMarkup(const QString& caption) {
    return u"<dc:description %1>%2</dc:description>"_s.arg(declaration(u"dc", xmp::dc), altMarkup(caption));
}

QString subjectMarkup(const QString& caption) {
    return u"<rdf:Description %1 %2 rdf:about=\"\">%3</rdf:Description>"_s.arg(
        declaration(u"rdf", xmp::rdf), declaration(u"dc", xmp::dc), captionMarkup(caption));
}

QString rdfMarkup(const QString& caption) {
    return u"<rdf:RDF %1>%2</rdf:RDF>"_s.arg(declaration(u"rdf", xmp::rdf), subjectMarkup(caption));
}

XmlElement itemOf(const XmlElement& alt, QStringView language) {
    const QList<XmlElement> items = alt.children("li");
    const auto found = std::ranges::find_if(
        items, [language](const XmlElement& item) { return item.attribute(u"xml:lang") == language; });
    return found == items.end() ? XmlElement() : *found;
}

/// One write of a caption to one document.
class CaptionEdit {
public:
    CaptionEdit(const XmlDocument& document, QString caption)
        : m_document(document), m_editor(document), m_caption(std::move(caption)) {}

    QByteArray run() {
        m_editor.clearStandalone();
        const XmlElement subject = ensureSubject();
        const XmlElement survivor = subject ? captionOf(subject) : XmlElement();
        detachOtherCaptions(survivor);
        detachSurplusRdf();
        return m_editor.result();
    }

private:
    /// The rdf:Description to work on, or the null element when one had to be made with the caption in it.
    XmlElement ensureSubject() {
        if (const XmlElement subject = describedSubject(m_document)) {
            return subject;
        }
        const XmlElement rdf = m_document.findFirst("RDF");
        if (!rdf) {
            m_editor.append(m_document.root(), rdfMarkup(m_caption));
            return {};
        }
        const XmlElement description = rdf.child("Description");
        if (!description) {
            m_editor.append(rdf, subjectMarkup(m_caption));
            return {};
        }
        clearAbout(description);
        return description;
    }

    /// A packet about another subject, such as a document's id, is from now on about this picture. The oldest
    /// writers omitted the prefix; readers refuse a packet with the attribute in both forms.
    void clearAbout(const XmlElement& description) {
        for (const XmlAttribute& attribute : description.attributes()) {
            const bool isRdf = attribute.namespaceUri() == xmp::rdf && attribute.hasLocalName(u"about");
            if (isRdf || attribute.isCalled(u"about")) {
                m_editor.setAttributeValue(attribute, {});
                return;
            }
        }
        m_editor.addAttribute(description, u"rdf:about=\"\""_s);
    }

    /// Writes the caption below the subject. Returns the dc:description that holds it, if it already existed.
    XmlElement captionOf(const XmlElement& subject) {
        declareIfUnknown(subject, u"dc"_s, xmp::dc);
        declareIfUnknown(subject, u"rdf"_s, xmp::rdf);
        const QList<XmlElement> captions = subject.children("description", xmp::dc);
        if (captions.isEmpty()) {
            m_editor.insertFirst(subject, captionMarkup(m_caption));
            return {};
        }
        for (const XmlElement& surplus : captions.sliced(1)) {
            m_editor.detach(surplus);
        }
        fill(captions.first());
        return captions.first();
    }

    void declareIfUnknown(const XmlElement& element, const QString& prefix, QByteArrayView uri) {
        if (!element.resolvePrefix(prefix)) {
            m_editor.addAttribute(element, declaration(prefix, uri));
        }
    }

    /// Old plain text would remain beside the list, where no reader expects it.
    void fill(const XmlElement& captionElement) {
        m_editor.removeText(captionElement);
        const QList<XmlElement> alts = captionElement.children("Alt", xmp::rdf);
        if (alts.isEmpty()) {
            addList(captionElement);
            return;
        }
        for (const XmlElement& surplus : alts.sliced(1)) {
            m_editor.detach(surplus);
        }
        for (const char16_t* language : captionLanguages) {
            if (const XmlElement item = itemOf(alts.first(), language)) {
                m_editor.setContent(item, escapeXmlText(m_caption));
            } else {
                m_editor.append(alts.first(), itemMarkup(language, m_caption));
            }
        }
    }

    /// A list that looks the same but has another namespace is foreign, yet it must not be read first.
    void addList(const XmlElement& captionElement) {
        if (childWrittenAsAlt(captionElement)) {
            m_editor.insertFirst(captionElement, altMarkup(m_caption));
        } else {
            m_editor.append(captionElement, altMarkup(m_caption));
        }
    }

    /// Captions in other blocks would still show the old text. One that another tool has marked to be kept
    /// stays; on the survivor, that mark is of no more use.
    void detachOtherCaptions(const XmlElement& survivor) {
        for (const XmlElement& caption : m_document.find("description", xmp::dc)) {
            if (caption == survivor) {
                removeKeepMark(caption);
            } else if (caption.attribute(u"pm-keep") != u"1") {
                m_editor.detach(caption);
            }
        }
    }

    void removeKeepMark(const XmlElement& caption) {
        for (const XmlAttribute& attribute : caption.attributes()) {
            if (attribute.isCalled(u"pm-keep")) {
                m_editor.removeAttribute(attribute);
            }
        }
    }

    /// Of several RDF elements under one parent, only the first is the packet.
    void detachSurplusRdf() {
        std::set<quint32> parents;
        for (const XmlElement& rdf : m_document.find("RDF")) { // in document order
            const XmlElement parent = rdf.parent();
            if (parent && !parents.insert(parent.index()).second) {
                m_editor.detach(rdf);
            }
        }
    }

    const XmlDocument& m_document;
    XmlEditor m_editor;
    QString m_caption;
};

bool holdsCaption(const XmlDocument& document, const QString& caption) {
    if (defaultCaption(document) != caption) { // as readers will see it
        return false;
    }
    const XmlElement subject = describedSubject(document);
    const XmlElement element = subject ? subject.child("description", xmp::dc) : XmlElement();
    const XmlElement alt = element ? element.child("Alt", xmp::rdf) : XmlElement();
    return alt && std::ranges::all_of(captionLanguages, [&alt, &caption](const char16_t* language) {
               const XmlElement item = itemOf(alt, language);
               return item && item.text() == caption;
           });
}

/// True when the bytes may replace a good file.
bool isGood(const QByteArray& edited, const QString& caption) {
    try {
        return holdsCaption(XmlDocument::parse(edited), caption);
    } catch (const XmlError&) {
        return false;
    }
}

} // namespace

QByteArray withCaption(const XmlDocument& document, const QString& caption) {
    const QString writable = withoutForbiddenCharacters(caption);
    QByteArray edited = CaptionEdit(document, writable).run();
    if (!isGood(edited, writable)) {
        throw XMPError(XMPError::Case::writeFailed);
    }
    return edited;
}

} // namespace ostrelle
