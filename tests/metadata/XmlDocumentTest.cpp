// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/xml/XmlDocument.h"

#include "metadata/sidecar/SidecarCaptionEdit.h"
#include "metadata/xml/XmlError.h"
#include "metadata/xml/XmpNamespaces.h"
#include "metadata/xml/XmpQueries.h"

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
    const QByteArray edited = withCaption(XmlDocument::parse(tag(30'000)), u"New"_s);
    EXPECT_EQ(defaultCaption(XmlDocument::parse(edited)), u"New"_s);
    EXPECT_THROW(XmlDocument::parse(tag(100'001)), XmlError);
}

TEST(XmlDocument, CaptionsWithinCaptionsTakeNoLongerThanTheirNumber) {
    const QByteArray opening = "<dc:description xmlns:dc='" + xmp::dc.toByteArray() + "'>";
    const XmlDocument document = XmlDocument::parse(opening.repeated(900) + "<Alt>" +
                                                    QByteArray("<li xml:lang='de'/>").repeated(100'000) +
                                                    "</Alt>" + QByteArray("</dc:description>").repeated(900));
    EXPECT_EQ(defaultCaption(document), std::nullopt);
}

} // namespace ostrelle
