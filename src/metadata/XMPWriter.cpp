// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/XMPWriter.h"

#include "metadata/EmbeddedCaptionWrite.h"
#include "metadata/EmbeddedReading.h"
#include "metadata/MetadataDates.h"
#include "metadata/SidecarCaptionEdit.h"
#include "metadata/XMPError.h"
#include "metadata/XmlDocument.h"
#include "metadata/XmlError.h"
#include "metadata/XmpNamespaces.h"
#include "metadata/XmpQueries.h"
#include "platform/Files.h"

#include <QFileInfo>
#include <algorithm>
#include <array>
#include <functional>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr QByteArrayView sidecarTemplate =
    "<?xpacket begin=\"\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>\n"
    "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\" x:xmptk=\"XMP Core 6.0.0\">\n"
    "   <rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">\n"
    "      <rdf:Description rdf:about=\"\"\n"
    "            xmlns:dc=\"http://purl.org/dc/elements/1.1/\">\n"
    "         <dc:description>\n"
    "            <rdf:Alt>\n"
    "               <rdf:li xml:lang=\"x-default\"></rdf:li>\n"
    "            </rdf:Alt>\n"
    "         </dc:description>\n"
    "      </rdf:Description>\n"
    "   </rdf:RDF>\n"
    "</x:xmpmeta>\n"
    "<?xpacket end=\"w\"?>";

void checkExists(const QString& sidecar) {
    if (!QFileInfo::exists(sidecar)) {
        throw XMPError(XMPError::Case::fileMissing);
    }
}

XmlDocument parseSidecar(const QByteArray& bytes) {
    XmlDocument document = XmlDocument::parse(bytes);
    if (!document.root()) {
        throw XMPError(XMPError::Case::noPacket);
    }
    return document;
}

XmlDocument openSidecar(const QString& sidecar) {
    checkExists(sidecar);
    return parseSidecar(readFile(sidecar, XmlDocument::maximumSize));
}

/// The first value that is not blank, of the attributes that may tell the date of the picture.
std::optional<QString> dateFromAttributes(const XmlElement& subject) {
    using Test = std::function<bool(const XmlAttribute&)>;
    static const std::array<Test, 4> order = {
        [](const XmlAttribute& attribute) { return attribute.isCalled(u"photoshop:DateCreated"); },
        [](const XmlAttribute& attribute) { return attribute.hasLocalName(u"DateCreated"); },
        [](const XmlAttribute& attribute) { return attribute.isCalled(u"xmp:CreateDate"); },
        [](const XmlAttribute& attribute) { return attribute.hasLocalName(u"CreateDate"); }};
    const QList<XmlAttribute> attributes = subject.attributes();
    for (const Test& isWanted : order) {
        const auto found = std::ranges::find_if(attributes, isWanted);
        if (found == attributes.end()) {
            continue;
        }
        if (const std::optional<QString> value = trimmedOrNothing(found->value())) {
            return roundTripIso8601(*value);
        }
    }
    return std::nullopt;
}

std::optional<QString> dateFromElements(const XmlDocument& document, const QTimeZone& zone) {
    std::optional<QString> value = firstElementText(document, "DateTimeOriginal", xmp::exif);
    if (!value) {
        value = firstElementText(document, "CreateDate", xmp::basic);
    }
    return value ? std::optional(normalizeDate(*value, zone)) : std::nullopt;
}

QStringList keywordsOf(const XmlDocument& document) {
    QStringList keywords;
    qsizetype size = 0;
    for (const XmlElement& subject : document.find("subject", xmp::dc)) {
        const XmlElement bag = subject.child("Bag", xmp::rdf);
        for (const XmlElement& item : bag ? bag.children("li", xmp::rdf) : QList<XmlElement>()) {
            if (const std::optional<QString> keyword = trimmedOrNothing(item.text())) {
                keywords.append(*keyword);
                size += keyword->size();
            }
            if (size > document.bytes().size()) { // lists within lists tell the same text again and again
                throw XmlError(u"The XML was refused: its keywords are longer than itself."_s);
            }
        }
    }
    return keywords;
}

} // namespace

QString sidecarPath(const QString& imagePath) {
    const QFileInfo image(imagePath);
    const qsizetype extension = image.suffix().isEmpty() ? 0 : image.suffix().size() + 1;
    return imagePath.chopped(extension) + u".xmp"_s;
}

void XMPWriter::createEmptySidecar(const QString& sidecar) const {
    replaceFile(sidecar, sidecarTemplate.toByteArray());
}

bool XMPWriter::createMissingSidecar(const QString& sidecar) const {
    return createFile(sidecar, sidecarTemplate.toByteArray());
}

std::optional<QString> XMPWriter::readDefaultCaption(const QString& sidecar) const {
    const XmlDocument document = openSidecar(sidecar);
    for (const XmlElement& caption : document.find("description", xmp::dc)) {
        if (std::optional<QString> value = findAltLangValue(caption, u"x-default")) {
            return value;
        }
    }
    // A sidecar without a caption: the x-default text of its first list of languages, whatever it is about.
    const XmlElement alt = document.findFirst("Alt", xmp::rdf);
    return alt ? findAltLangValue(alt, u"x-default") : std::nullopt;
}

void XMPWriter::writeDefaultCaption(const QString& caption, const QString& sidecar) const {
    checkExists(sidecar);
    editFile(sidecar, XmlDocument::maximumSize,
             [&caption](const QByteArray& bytes) { return withCaption(parseSidecar(bytes), caption); });
}

XMPContext XMPWriter::readContext(const QString& sidecar, const QTimeZone& zone) const {
    const XmlDocument document = openSidecar(sidecar);
    XMPContext context;
    if (const XmlElement subject = describedSubject(document)) {
        context.dateISO8601 = dateFromAttributes(subject);
    }
    context.city = firstElementText(document, "City", xmp::photoshop);
    context.state = firstElementText(document, "State", xmp::photoshop);
    context.country = firstElementText(document, "Country", xmp::photoshop);
    context.location = firstElementText(document, "Location", xmp::iptcCore);
    context.event = firstElementText(document, "Event", xmp::iptcCore);
    if (!context.event) {
        context.event = firstElementText(document, "Headline", xmp::photoshop);
    }
    if (!context.dateISO8601) {
        context.dateISO8601 = dateFromElements(document, zone);
    }
    context.keywords = keywordsOf(document);
    return context;
}

std::optional<QString> XMPWriter::readRights(const QString& sidecar, PlainLog& log) const {
    const auto say = [&log](const QString& words) { log.print(u"[XMPWriter] readRights"_s + words); };
    say(u" called for: "_s + QFileInfo(sidecar).fileName());
    if (!QFileInfo::exists(sidecar)) {
        say(u": file does not exist"_s);
        throw XMPError(XMPError::Case::fileMissing);
    }
    const XmlDocument document = XmlDocument::parse(readFile(sidecar, XmlDocument::maximumSize));
    if (!document.root()) {
        say(u": no root element"_s);
        throw XMPError(XMPError::Case::noPacket);
    }
    const QList<XmlElement> nodes = document.find("rights");
    say(u": found %1 rights nodes (any namespace)"_s.arg(nodes.size()));
    for (qsizetype index = 0; index < nodes.size(); ++index) {
        const QByteArrayView uri = nodes[index].namespaceUri();
        say(u": node %1 namespace-uri: %2"_s.arg(QString::number(index),
                                                 uri.isEmpty() ? u"nil"_s : QString::fromUtf8(uri)));
    }
    for (qsizetype index = 0; index < nodes.size(); ++index) {
        say(u": processing node %1"_s.arg(index));
        const QList<XmlElement> alts = nodes[index].children("Alt");
        say(u": found %1 Alt elements"_s.arg(alts.size()));
        if (alts.isEmpty()) {
            say(u": no Alt element found"_s);
            continue;
        }
        say(u": calling findAltLangValue"_s);
        const std::optional<QString> value = findAltLangValue(alts.first(), u"x-default");
        if (value && !value->trimmed().isEmpty()) {
            say(u": found value: \"%1\""_s.arg(*value));
            return value->trimmed();
        }
        say(u": findAltLangValue returned nil or empty"_s);
    }
    say(u": returning nil - no rights found"_s);
    return std::nullopt;
}

std::optional<QString> XMPWriter::readCreator(const QString& sidecar) const {
    const XmlDocument document = openSidecar(sidecar);
    for (const XmlElement& creator : document.find("creator", xmp::dc)) {
        const XmlElement sequence = creator.child("Seq", xmp::rdf);
        const XmlElement item = sequence ? sequence.child("li", xmp::rdf) : XmlElement();
        if (const std::optional<QString> name = item ? trimmedOrNothing(item.text()) : std::nullopt) {
            return name;
        }
    }
    return std::nullopt;
}

std::optional<QString> XMPWriter::readEmbeddedCaption(const QString& image, PlainLog& log) const {
    const std::optional<EmbeddedMetadata> metadata = readEmbeddedMetadata(image);
    return metadata ? embeddedCaption(*metadata, log) : std::nullopt;
}

XMPContext XMPWriter::readEmbeddedContext(const QString& image, const QTimeZone& zone, PlainLog& log) const {
    const std::optional<EmbeddedMetadata> metadata = readEmbeddedMetadata(image);
    return metadata ? embeddedContext(*metadata, zone, log) : XMPContext();
}

std::optional<QString> XMPWriter::readEmbeddedRights(const QString& image) const {
    const std::optional<EmbeddedMetadata> metadata = readEmbeddedMetadata(image);
    return metadata ? embeddedRights(*metadata) : std::nullopt;
}

std::optional<QString> XMPWriter::readEmbeddedCreator(const QString& image) const {
    const std::optional<EmbeddedMetadata> metadata = readEmbeddedMetadata(image);
    return metadata ? embeddedCreator(*metadata) : std::nullopt;
}

void XMPWriter::writeEmbeddedCaption(const QString& caption, const QString& image, PlainLog& log,
                                     const std::optional<FileStamp>& decoded) const {
    writeCaptionIntoJpeg(image, caption, log, decoded);
}

} // namespace ostrelle
