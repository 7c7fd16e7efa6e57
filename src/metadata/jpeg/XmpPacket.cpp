// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/jpeg/XmpPacket.h"

#include "metadata/jpeg/EditRefusal.h"
#include "metadata/xml/XmlDocument.h"
#include "metadata/xml/XmlEditor.h"
#include "metadata/xml/XmpNamespaces.h"

#include <algorithm>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr QByteArrayView captionName = "description";

QList<XmlElement> subjects(const XmlDocument& packet) {
    QList<XmlElement> found;
    for (const XmlElement& element : packet.find("Description", xmp::rdf)) {
        if (element.parent() && element.parent().is("RDF", xmp::rdf)) {
            found.append(element);
        }
    }
    return found;
}

std::optional<XmlAttribute> attributeOf(const XmlElement& subject, QByteArrayView localName,
                                        QByteArrayView namespaceUri) {
    return subject.attribute(QString::fromLatin1(localName), namespaceUri);
}

XmlElement listOf(const XmlElement& property) {
    for (const QByteArrayView kind : {"Alt", "Bag", "Seq"}) {
        if (const XmlElement list = property.child(kind, xmp::rdf)) {
            return list;
        }
    }
    return {};
}

XmlElement defaultItem(const QList<XmlElement>& items) {
    const auto found = std::ranges::find_if(
        items, [](const XmlElement& item) { return item.attribute(u"xml:lang") == u"x-default"; });
    return found == items.end() ? XmlElement() : *found;
}

QStringList valuesOf(const XmlElement& property) {
    const XmlElement list = listOf(property);
    if (!list) {
        return {property.text()};
    }
    const QList<XmlElement> items = list.children("li", xmp::rdf);
    if (items.isEmpty()) {
        return {};
    }
    if (list.localName() == "Alt") {
        const XmlElement item = defaultItem(items);
        return {(item ? item : items.first()).text()};
    }
    QStringList values;
    for (const XmlElement& item : items) {
        values.append(item.text());
    }
    return values;
}

QString itemMarkup(const QString& caption) {
    return u"<rdf:li xmlns:rdf=\"%1\" xml:lang=\"x-default\">%2</rdf:li>"_s.arg(QLatin1StringView(xmp::rdf),
                                                                                escapeXmlText(caption));
}

QString altMarkup(const QString& caption) {
    return u"<rdf:Alt xmlns:rdf=\"%1\">%2</rdf:Alt>"_s.arg(QLatin1StringView(xmp::rdf), itemMarkup(caption));
}

/// Readers turn tabs and line ends into spaces unless they are written as references.
QString escapeXmlAttribute(const QString& text) {
    return escapeXmlText(text)
        .replace(u'"', u"&quot;"_s)
        .replace(u'\'', u"&apos;"_s)
        .replace(u'\n', u"&#10;"_s)
        .replace(u'\t', u"&#9;"_s);
}

void setCaption(XmlEditor& editor, const XmlElement& property, const QString& caption) {
    editor.removeText(property); // beside a list, it makes readers refuse the packet
    const XmlElement alt = property.child("Alt", xmp::rdf);
    if (!alt) {
        if (const XmlElement list = listOf(property)) { // of the wrong kind for a caption
            editor.detach(list);
        }
        editor.append(property, altMarkup(caption));
        return;
    }
    const QList<XmlElement> items = alt.children("li", xmp::rdf);
    if (!defaultItem(items)) {
        editor.insertFirst(alt, itemMarkup(caption));
    }
    for (const XmlElement& item : items) {
        const std::optional<QString> language = item.attribute(u"xml:lang");
        if (!language || language == u"x-default" || language == u"en-US") { // readers choose differently
            editor.setContent(item, escapeXmlText(caption));
        }
    }
}

bool holds(const QByteArray& bytes, const QString& caption) {
    const XmlDocument packet = XmlDocument::parse(bytes);
    return packetValues(packet, captionName, xmp::dc) == QStringList(caption);
}

} // namespace

QByteArrayView packetText(QByteArrayView content) {
    const bool isUtf16 =
        content.size() > 1 && (content[0] == '\0' || content[1] == '\0' || content.startsWith("\xFE\xFF") ||
                               content.startsWith("\xFF\xFE"));
    while (!isUtf16 && content.endsWith('\0')) {
        content.chop(1);
    }
    return content;
}

std::optional<QStringList> packetValues(const XmlDocument& packet, QByteArrayView localName,
                                        QByteArrayView namespaceUri) {
    for (const XmlElement& subject : subjects(packet)) {
        if (const XmlElement property = subject.child(localName, namespaceUri)) {
            return valuesOf(property);
        }
        if (const std::optional<XmlAttribute> attribute = attributeOf(subject, localName, namespaceUri)) {
            return QStringList(attribute->value());
        }
    }
    return std::nullopt;
}

std::optional<QByteArray> withPacketCaption(const XmlDocument& packet, const QString& caption) {
    XmlEditor editor(packet);
    bool hasCaption = false;
    for (const XmlElement& subject : subjects(packet)) {
        for (const XmlElement& property : subject.children(captionName, xmp::dc)) {
            setCaption(editor, property, caption);
            hasCaption = true;
        }
        if (const std::optional<XmlAttribute> attribute = attributeOf(subject, captionName, xmp::dc)) {
            editor.setAttributeValue(*attribute, escapeXmlAttribute(caption));
            hasCaption = true;
        }
    }
    if (!hasCaption) {
        return std::nullopt;
    }
    QByteArray edited = editor.result();
    if (!holds(edited, caption)) {
        throw EditRefusal(u"the description in its XMP packet cannot be set"_s);
    }
    return edited;
}

QByteArray withLessPadding(const QByteArray& packet, qsizetype maximumSize) {
    const qsizetype end = packet.lastIndexOf("<?xpacket");
    qsizetype begin = end;
    while (begin > 0 && QByteArrayView(" \n\r\t").contains(packet[begin - 1])) {
        --begin;
    }
    const qsizetype surplus = packet.size() - maximumSize;
    if (surplus <= 0 || end < 0 || end - begin < surplus) {
        return packet;
    }
    return packet.first(end - surplus) + packet.sliced(end);
}

} // namespace ostrelle
