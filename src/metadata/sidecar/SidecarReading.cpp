// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/sidecar/SidecarReading.h"

#include "metadata/facts/MetadataDates.h"
#include "metadata/xml/XmpNamespaces.h"
#include "metadata/xml/XmpQueries.h"

#include <algorithm>
#include <array>
#include <functional>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// The first non-blank value of the attributes that may give the picture's date.
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

/// Nested lists repeat the same text over and over, so keywords longer than the document itself are cut off.
QStringList keywordsOf(const XmlDocument& document) {
    QStringList keywords;
    qsizetype room = document.bytes().size();
    for (const XmlElement& subject : document.find("subject", xmp::dc)) {
        const XmlElement bag = subject.child("Bag", xmp::rdf);
        for (const XmlElement& item : bag ? bag.children("li", xmp::rdf) : QList<XmlElement>()) {
            const std::optional<QString> keyword = trimmedOrNothing(item.text());
            room -= keyword ? keyword->size() : 0;
            if (room < 0) {
                return keywords;
            }
            if (keyword) {
                keywords.append(*keyword);
            }
        }
    }
    return keywords;
}

} // namespace

QStringList sidecarTranslations(const XmlDocument& document) {
    QStringList captions;
    for (const XmlElement& caption : document.find("description", xmp::dc)) {
        if (const std::optional<QString> text = findAltLangValue(caption, u"en-US")) {
            captions.append(*text);
        }
    }
    return captions;
}

XMPContext sidecarContext(const XmlDocument& document, const QTimeZone& zone) {
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

std::optional<QString> sidecarRights(const XmlDocument& document, PlainLog& log) {
    const auto say = [&log](const QString& words) { log.print(u"[XMPWriter] readRights"_s + words); };
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

std::optional<QString> sidecarCreator(const XmlDocument& document) {
    for (const XmlElement& creator : document.find("creator", xmp::dc)) {
        const XmlElement sequence = creator.child("Seq", xmp::rdf);
        const XmlElement item = sequence ? sequence.child("li", xmp::rdf) : XmlElement();
        if (const std::optional<QString> name = item ? trimmedOrNothing(item.text()) : std::nullopt) {
            return name;
        }
    }
    return std::nullopt;
}

} // namespace ostrelle
