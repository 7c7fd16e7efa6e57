// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/xml/XmlEditor.h"

#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

void XmlEditor::detach(const XmlElement& element) {
    splice(element.span(), {});
}

void XmlEditor::removeText(const XmlElement& element) {
    for (const XmlSpan& span : element.textSpans()) {
        splice(span, {});
    }
}

void XmlEditor::setContent(const XmlElement& element, const QString& markup) {
    m_changes[element.index()].content = markup;
}

void XmlEditor::insertFirst(const XmlElement& element, const QString& markup) {
    m_changes[element.index()].first += markup;
}

void XmlEditor::append(const XmlElement& element, const QString& markup) {
    m_changes[element.index()].last += markup;
}

void XmlEditor::addAttribute(const XmlElement& element, const QString& markup) {
    m_changes[element.index()].attributes += u' ' + markup;
}

void XmlEditor::removeAttribute(const XmlAttribute& attribute) {
    splice(attribute.span(), {});
}

void XmlEditor::setAttributeValue(const XmlAttribute& attribute, const QString& markup) {
    splice(attribute.valueSpan(), markup);
}

void XmlEditor::clearStandalone() {
    if (const std::optional<XmlSpan> yes = m_document.standaloneYes()) {
        splice(*yes, u"no"_s);
    }
}

void XmlEditor::appendSplices(const XmlElement& element, const Change& change,
                              std::vector<Splice>& splices) const {
    const qsizetype unit = unitSize(m_document.encoding());
    const qsizetype tagEnd = element.startTag().end;
    if (element.isEmptyTag()) {
        const XmlSpan slashAndBracket{tagEnd - 2 * unit, tagEnd};
        const QString content = change.first + change.content.value_or(QString()) + change.last;
        const QString closing =
            content.isEmpty() ? u"/>"_s : u'>' + content + u"</"_s + QString::fromUtf8(element.name()) + u'>';
        splices.push_back({slashAndBracket, change.attributes + closing});
        return;
    }
    const XmlSpan bracket{tagEnd - unit, tagEnd - unit};
    splices.push_back({bracket, change.attributes});
    splices.push_back({{tagEnd, tagEnd}, change.first});
    const XmlSpan content = element.content();
    if (change.content) {
        splices.push_back({content, *change.content});
    }
    splices.push_back({{content.end, content.end}, change.last});
}

QByteArray XmlEditor::result() const {
    std::vector<Splice> splices = m_splices;
    for (const auto& [index, change] : m_changes) {
        appendSplices(XmlElement(m_document, index), change, splices);
    }
    // At the same place, insertions come before removals: such an insertion belongs to the outer element. A
    // multimap keeps equal keys in order.
    std::multimap<std::pair<qsizetype, bool>, const Splice*> inOrder;
    for (const Splice& splice : splices) {
        inOrder.emplace(std::pair(splice.span.begin, splice.span.size() > 0), &splice);
    }
    const QByteArrayView source = m_document.bytes();
    QByteArray edited;
    edited.reserve(source.size() + 1024);
    qsizetype done = 0;
    for (const auto& [place, splice] : inOrder) {
        if (splice->span.begin < done) {
            continue; // inside something removed or replaced
        }
        edited.append(source.sliced(done, splice->span.begin - done));
        edited.append(encodeXml(splice->markup, m_document.encoding()));
        done = splice->span.end;
    }
    edited.append(source.sliced(done));
    return edited;
}

} // namespace ostrelle
