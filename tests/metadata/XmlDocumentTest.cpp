// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/XmlDocument.h"

#include "metadata/SidecarCaptionEdit.h"
#include "metadata/XmlError.h"
#include "metadata/XmpNamespaces.h"
#include "metadata/XmpQueries.h"

#include <gtest/gtest.h>

#include <QStringEncoder>

namespace ostrelle {

using namespace Qt::StringLiterals;

TEST(XmlDocument, ReadsAttributesInTheEncodingThatTheParserFinds) {
    for (const auto encoding : {QStringConverter::Utf16LE, QStringConverter::Utf16BE}) {
        QStringEncoder encode(encoding, QStringConverter::Flag::Stateless);
        const XmlDocument document = XmlDocument::parse(encode(u"\n<a b=\"\u4E00\"/>"_s));
        EXPECT_EQ(document.root().attribute(u"b"), u"\u4E00"_s);
    }
}

TEST(XmlDocument, KnowsTheNamespaceOfEachAttribute) {
    const XmlDocument document =
        XmlDocument::parse("<a xmlns:p='one' xmlns:q='two' p:x='1'><b q:x='2' xmlns:p='two' x='3' "
                           "xmlns='one' p:y='4' xml:lang='5'/></a>");
    const XmlElement inner = document.root().firstChild();
    EXPECT_EQ(document.root().attribute(u"x", "one")->value(), u"1"_s);
    EXPECT_EQ(inner.attribute(u"x", "two")->value(), u"2"_s);
    EXPECT_EQ(inner.attribute(u"y", "two")->value(), u"4"_s);
    EXPECT_EQ(inner.attribute(u"lang", "http://www.w3.org/XML/1998/namespace")->value(), u"5"_s);
    EXPECT_FALSE(inner.attribute(u"x", "one"));
}

TEST(XmlStartTagReader, StaysInsideATagThatEndsAnywhere) {
    QStringEncoder encode(QStringConverter::Utf16LE, QStringConverter::Flag::Stateless);
    const QByteArray utf16 = encode(u"<a b = \"c\" d='e'/>"_s);
    for (qsizetype size = 0; size < utf16.size(); ++size) {
        const QByteArray tag(utf16.constData(), size); // of its own, so that a sanitizer sees its end
        XmlStartTagReader reader(tag, {0, size}, XmlEncoding::utf16LittleEndian);
        while (const std::optional<XmlAttribute> attribute = reader.next()) {
            EXPECT_LE(attribute->span().end, size);
        }
    }
}

// Each of these takes about a second, and many minutes if every one of its elements or attributes looks at
// all the others.

TEST(XmlDocument, ManyAttributesTakeNoLongerThanTheirNumber) {
    const auto tag = [](int count) {
        QByteArray declarations;
        QByteArray attributes;
        for (int number = 0; number < count; ++number) {
            const QByteArray prefix = "p" + QByteArray::number(number);
            declarations += " xmlns:" + prefix + "='" + prefix + "'";
            attributes += " " + prefix + ":about='x'";
        }
        return "<r:RDF xmlns:r='" + xmp::rdf.toByteArray() + "'" + declarations + "><r:Description" +
               attributes + "/></r:RDF>";
    };
    const QByteArray edited = withCaption(XmlDocument::parse(tag(90'000)), u"New"_s);
    EXPECT_EQ(defaultCaption(XmlDocument::parse(edited)), u"New"_s);
    EXPECT_THROW(XmlDocument::parse(tag(100'001)), XmlError);
}

TEST(XmlDocument, CaptionsWithinCaptionsTakeNoLongerThanTheirNumber) {
    const QByteArray opening = "<dc:description xmlns:dc='" + xmp::dc.toByteArray() + "'>";
    const XmlDocument document = XmlDocument::parse(opening.repeated(900) + "<Alt>" +
                                                    QByteArray("<li xml:lang='de'/>").repeated(500'000) +
                                                    "</Alt>" + QByteArray("</dc:description>").repeated(900));
    EXPECT_EQ(defaultCaption(document), std::nullopt);
}

} // namespace ostrelle
