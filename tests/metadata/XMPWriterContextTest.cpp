// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/SidecarBytes.h"
#include "metadata/facts/XMPError.h"
#include "metadata/sidecar/SidecarPath.h"
#include "metadata/xml/XmlError.h"
#include "support/Failure.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

XMPContext contextOf(const QByteArray& fields, const QByteArray& attributes = {}) {
    return readSidecar(subject(fields, attributes)).facts.context;
}

} // namespace

TEST(XMPWriterContext, ReadsAllFieldsOfAnIngestPreset) {
    const XMPContext context =
        contextOf("<photoshop:City> Baton Rouge\n</photoshop:City>"
                  "<photoshop:State>La.</photoshop:State>"
                  "<photoshop:Country>USA</photoshop:Country>"
                  "<Iptc4xmpCore:Location>Tiger &amp; Sons Field</Iptc4xmpCore:Location>"
                  "<Iptc4xmpCore:Event>Auburn at LSU</Iptc4xmpCore:Event>"
                  "<photoshop:Headline>Not the event</photoshop:Headline>"
                  "<dc:subject><rdf:Bag><rdf:li>football</rdf:li><rdf:li> </rdf:li>"
                  "<rdf:li><![CDATA[A&M]]></rdf:li><rdf:li>football</rdf:li></rdf:Bag></dc:subject>"
                  "<dc:subject><rdf:Seq><rdf:li>ignored</rdf:li></rdf:Seq></dc:subject>",
                  " photoshop:DateCreated='2024-10-26T19:02:33-05:00'");
    EXPECT_EQ(
        contextDescription(context),
        u"City: Baton Rouge • State/Province: La. • Country: USA • Venue/Location: Tiger & Sons Field • "
        "Date: 2024-10-27T00:02:33Z • Event: Auburn at LSU • Keywords: football, A&M, football"_s);
    EXPECT_EQ(context.keywords.size(), 3);
    EXPECT_TRUE(contextIsEmpty(contextOf("")));
    // A field has only one form, and its first element decides.
    EXPECT_FALSE(contextOf("<photoshop:City/><photoshop:City>Second</photoshop:City>").city);
    EXPECT_FALSE(contextOf("", " photoshop:City='Attribute'").city);
    EXPECT_EQ(contextOf("<photoshop:Headline>Headline</photoshop:Headline>").event, u"Headline"_s);
}

TEST(XMPWriterContext, TakesTheDateFromTheFirstPlaceThatHasOne) {
    const QByteArray original = "<exif:DateTimeOriginal>2023:01:02 03:04:05</exif:DateTimeOriginal>";
    const QByteArray created = "<xmp:CreateDate>2022-01-02</xmp:CreateDate>";
    const struct {
        QByteArray attributes;
        QByteArray elements;
        std::optional<QString> date;
    } rows[] = {
        {" photoshop:DateCreated='2024-03-05T19:02:33Z' xmp:CreateDate='2021-01-01'", original,
         u"2024-03-05T19:02:33Z"_s},
        {" photoshop:DateCreated='  ' odd:DateCreated='2020-01-01'", original, u"2023-01-02"_s},
        {" photoshop:DateCreated=' ' xmp:CreateDate='2021-01-01'", original, u"2021-01-01"_s},
        {" odd:CreateDate='2019-01-01'", original, u"2019-01-01"_s},
        {" odd:DateCreated='2018-01-01' xmp:CreateDate='2021-01-01'", "", u"2018-01-01"_s},
        {"", created + original, u"2023-01-02"_s},
        {"", created, u"2022-01-02"_s},
        {"", "", std::nullopt},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(contextOf(row.elements, row.attributes).dateISO8601, row.date)
            << row.attributes.toStdString();
    }
}

TEST(XMPWriterContext, RightsComeFromAnyNamespaceAndFromXDefaultOnly) {
    const QByteArray alt = "<rdf:Alt>" + item("x-default", " (c) A. Photographer ") + "</rdf:Alt>";
    const QString found = u"found value: \" (c) A. Photographer \""_s;
    const struct {
        QByteArray fields;
        std::optional<QString> rights;
        QString lastLine;
    } rows[] = {
        {"<dc:rights>" + alt + "</dc:rights>", u"(c) A. Photographer"_s, found},
        {"<dc:rights>plain</dc:rights><odd:rights>" + alt + "</odd:rights>", u"(c) A. Photographer"_s, found},
        {"<dc:rights><rdf:Alt>" + item("en-US", "no") + "</rdf:Alt></dc:rights>", std::nullopt,
         u"returning nil - no rights found"_s},
        {"", std::nullopt, u"returning nil - no rights found"_s},
    };
    for (const auto& row : rows) {
        const MetadataReading reading = readSidecar(subject(row.fields));
        EXPECT_EQ(reading.facts.rights, row.rights);
        EXPECT_EQ(reading.rightsLines.first(), u"[XMPWriter] readRights called for: IMG_0001.xmp"_s);
        EXPECT_EQ(reading.rightsLines.last(), u"[XMPWriter] readRights: "_s + row.lastLine);
    }
}

TEST(XMPWriterContext, CreatorIsTheFirstOfTheFirstSequenceThatHasOne) {
    const auto creatorOf = [](const QByteArray& fields) {
        return readSidecar(subject(fields)).facts.creator;
    };
    EXPECT_EQ(
        creatorOf(
            "<dc:creator><rdf:Seq><rdf:li> </rdf:li><rdf:li>Not looked at</rdf:li></rdf:Seq></dc:creator>"
            "<dc:creator><rdf:Seq><rdf:li>Second Block</rdf:li></rdf:Seq></dc:creator>"),
        u"Second Block"_s);
    EXPECT_FALSE(creatorOf("<dc:creator>plain</dc:creator>"));
}

TEST(XMPWriterContext, ACaptionIsReadFromXDefaultAsItStands) {
    const struct {
        QByteArray sidecar;
        std::optional<QString> caption;
    } rows[] = {
        {subject(described(item("en-US", "en") + item("x-default", " a &lt; b "))), u" a < b "_s},
        {subject(described(item("en-US", "en"))), std::nullopt},
        {subject(described("<rdf:li>no language</rdf:li>")), std::nullopt},
        {subject("<dc:description><odd:ALT>" + item("x-default", "odd") + "</odd:ALT></dc:description>"),
         std::nullopt},
        {subject("<dc:description><odd:box><odd:Alt>" + item("x-default", "deep") +
                 "</odd:Alt></odd:box></dc:description>"),
         u"deep"_s},
        {subject(described("<rdf:li xml:lang='x-default'/>")), u""_s},
        // Without any dc:description the first list of languages in the file stands in for it.
        {subject("<dc:title><rdf:Alt>" + item("x-default", "Title") + "</rdf:Alt></dc:title>"), u"Title"_s},
        {subject("", " dc:description='attribute'"), std::nullopt},
        // Written by a tool with prefixes of its own, in CDATA, over two lines with CR LF.
        {"<a:RDF xmlns:a=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\"><a:Description a:about=\"\">"
         "<d:description xmlns:d=\"http://purl.org/dc/elements/1.1/\"><a:Alt><a:li "
         "xml:lang=\"x-default\"><![CDATA[1 & 2]]>\r\n&#x1F3C8;</a:li></a:Alt>"
         "</d:description></a:Description></a:RDF>",
         u"1 & 2\n\U0001F3C8"_s},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(readSidecar(row.sidecar).facts.caption, row.caption) << row.sidecar.toStdString();
    }
}

TEST(XMPWriterContext, SaysWhatIsWrongWithAFile) {
    const auto kindOf = [](const auto& operation) { return failureIn<XMPError>(operation).kind(); };
    using enum XMPError::Case;
    const QString nowhere = u"/nowhere/IMG_0001.xmp"_s;
    EXPECT_EQ(kindOf([&] { XMPWriter().readSidecar(nowhere, QTimeZone::utc()); }), fileMissing);
    EXPECT_EQ(kindOf([&] { XMPWriter().writeDefaultCaption(u"x"_s, nowhere); }), fileMissing);
    EXPECT_EQ(kindOf([] { readSidecar("<?xpacket begin=''?>"); }), noPacket);
    EXPECT_THROW(readSidecar("this is a JPEG, really"), XmlError);
}

TEST(XMPWriterContext, KeywordsWithinKeywordsAreCutBeforeTheyFillTheMemory) {
    const QByteArray open = "<dc:subject><rdf:Bag><rdf:li>";
    const QByteArray close = "</rdf:li></rdf:Bag></dc:subject>";
    const QStringList keywords =
        contextOf(open.repeated(300) + QByteArray(100'000, 'x') + close.repeated(300)).keywords;
    EXPECT_EQ(keywords, QStringList(QString(100'000, u'x')));
}

TEST(XMPWriterContext, TheSidecarHasTheNameOfTheImageWithoutItsLastExtension) {
    EXPECT_EQ(sidecarPath(u"/shoot/IMG_0001.CR3"_s), u"/shoot/IMG_0001.xmp"_s);
    EXPECT_EQ(sidecarPath(u"/shoot.day/a.b.NEF"_s), u"/shoot.day/a.b.xmp"_s);
    EXPECT_EQ(sidecarPath(u"/shoot.day/noextension"_s), u"/shoot.day/noextension.xmp"_s);
}

} // namespace ostrelle
