// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/JpegMetadataBytes.h"
#include "metadata/SidecarBytes.h"
#include "metadata/facts/XMPError.h"
#include "support/Failure.h"

#include <QRegularExpression>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

std::optional<QString> captionOf(const QByteArray& segments) {
    return readEmbedded(jpegWith(segments)).facts.caption;
}

QByteArray ascii(const QByteArray& text) {
    return QByteArray("ASCII\0\0\0", 8) + text;
}

/// The lines with the log's tag.
QStringList tagged(QStringList words) {
    return words.replaceInStrings(QRegularExpression(u"^"_s), u"[XMPWriter] "_s);
}

} // namespace

TEST(EmbeddedCaption, IsTakenFromTheFirstPlaceThatDecidesAndEachStepIsTold) {
    const QByteArray exif = exifSegment({description("A try")}, {comment(ascii("A comment"))});
    const QString noRecords = u"No IPTC dictionary in metadata - checking fallback fields"_s;
    const struct {
        const char* name;
        QByteArray segments;
        std::optional<QString> caption;
        QStringList lines;
    } rows[] = {
        {"records without a caption decide",
         iptcSegment(iptc(90, "Dallas")) + exif,
         u""_s,
         {u"IPTC dictionary exists but no Caption Abstract field - treating as cleared/empty"_s}},
        {"blank records decide",
         iptcSegment(iptc(120, "   ")) + exif,
         u""_s,
         {u"IPTC Caption Abstract found: \"   \" (raw length: 3, trimmed length: 0, isEmpty: true)"_s}},
        {"records",
         iptcSegment(iptc(120, " Zo\xC3\xAB scores\n")) + exif,
         u"Zoë scores"_s,
         {u"IPTC Caption Abstract found: \" Zoë scores\n\" (raw length: 12, trimmed length: 10, "
          "isEmpty: false)"_s}},
        {"a record version is no field",
         iptcSegment(iptc(0, QByteArray("\0\4", 2))) + exif,
         u"A try"_s,
         {noRecords, u"TIFF Image Description found: \"A try\" (raw length: 5, trimmed length: 5)"_s}},
        {"a blank description is passed over",
         exifSegment({description(" ")}, {comment(ascii(" A comment"))}),
         u"A comment"_s,
         {noRecords, u"TIFF Image Description found: \" \" (raw length: 1, trimmed length: 0)"_s,
          u"EXIF User Comment found: \" A comment\" (raw length: 10, trimmed length: 9)"_s}},
        {"all are blank",
         exifSegment({description("  ")}, {comment(QByteArray(12, '\0'))}),
         std::nullopt,
         {noRecords, u"TIFF Image Description found: \"  \" (raw length: 2, trimmed length: 0)"_s,
          u"EXIF User Comment found: \"\" (raw length: 0, trimmed length: 0)"_s,
          u"Found fallback metadata fields but all were empty after trimming: "
          "TIFF Image Description: \"  \" (raw: 2 chars); EXIF User Comment: \"\" (raw: 0 chars)"_s}},
        {"the fields are missing",
         exifSegment({{0x010F, 2, "Camera"}}, {{0x9003, 2, "2024:03:05 19:02:33"}}),
         std::nullopt,
         {noRecords, u"TIFF dictionary exists but no Image Description field"_s,
          u"EXIF dictionary exists but no User Comment field"_s,
          u"No caption metadata fields found in JPEG"_s}},
        {"there is no metadata",
         "",
         std::nullopt,
         {noRecords, u"No TIFF dictionary in metadata"_s, u"No EXIF dictionary in metadata"_s,
          u"No caption metadata fields found in JPEG"_s}},
    };
    for (const auto& row : rows) {
        const MetadataReading reading = readEmbedded(jpegWith(row.segments));
        EXPECT_EQ(reading.facts.caption, row.caption) << row.name;
        EXPECT_EQ(reading.captionLines, tagged(row.lines)) << row.name;
    }
}

TEST(EmbeddedCaption, ComesFromThePacketWhereTheRecordsHaveNone) {
    const QByteArray exif = exifSegment({description("From TIFF")});
    const auto alt = [](const QByteArray& items) { return packetSegment(subject(described(items))); };
    const QByteArray usual = alt(item("en-US", "Other") + item("x-default", "Packet"));
    EXPECT_EQ(captionOf(usual + exif), u"Packet"_s);
    EXPECT_EQ(captionOf(usual + iptcSegment(iptc(90, "Dallas"))), u"Packet"_s);
    EXPECT_EQ(captionOf(usual + iptcSegment(iptc(120, "Records"))), u"Records"_s);
    EXPECT_EQ(captionOf(usual + iptcSegment(iptc(120, ""))), u""_s);
    EXPECT_EQ(captionOf(alt("<rdf:li>Only</rdf:li>") + exif), u"Only"_s);
    EXPECT_EQ(captionOf(packetSegment(subject("", " dc:description='Attribute'")) + exif), u"Attribute"_s);
    EXPECT_EQ(captionOf(packetSegment(subject("<xmp:Rating>5</xmp:Rating>")) + exif), u"From TIFF"_s);
    EXPECT_EQ(captionOf(packetSegment("<broken") + exif), u"From TIFF"_s);
}

TEST(EmbeddedCaption, IsReadInEveryEncodingThatProgramsWrite) {
    const QByteArray utf16 = QByteArray("Z\0o\0\xEB\0 \0\x3C\xD8\xC8\xDF", 12);
    const auto commented = [](const QByteArray& value) { return exifSegment({}, {comment(value)}); };
    const struct {
        const char* name;
        QByteArray segments;
        QString caption;
    } rows[] = {
        {"records in UTF-8", iptcSegment(utf8Declared + iptc(120, "Zo\xC3\xAB \xF0\x9F\x8F\x88")),
         u"Zoë \U0001F3C8"_s},
        {"records in undeclared UTF-8", iptcSegment(iptc(120, "Zo\xC3\xAB")), u"Zoë"_s},
        {"records in Windows-1252", iptcSegment(iptc(120, "Zo\xEB\x92s")), u"Zoë’s"_s},
        {"records in Latin-1", iptcSegment(dataSet(1, 90, "\x1B.A") + iptc(120, "\xC3\xAB")), u"Ã«"_s},
        {"a description in Windows-1252", exifSegment({description("Zo\xEB")}), u"Zoë"_s},
        {"a comment in ASCII", commented(ascii("Zoe")), u"Zoe"_s},
        {"a comment of the other byte order", commented(QByteArray("UNICODE\0", 8) + utf16),
         u"Zoë \U0001F3C8"_s},
        {"a comment of the block's byte order with a zero byte", commented(QByteArray("UNICODE\0{,N\0", 12)),
         u"第一"_s},
        {"a comment with a byte order mark", commented(QByteArray("UNICODE\0\xFF\xFE", 10) + utf16),
         u"Zoë \U0001F3C8"_s},
        {"a comment in JIS", commented(QByteArray("JIS\0\0\0\0\0", 8) + "\x1B$B4A;z\x1B(B"), u"漢字"_s},
        {"a comment in no declared charset", commented(QByteArray(8, '\0') + "Zo\xC3\xAB"), u"Zoë"_s},
        {"a comment without the prefix", commented("No prefix at all"), u"No prefix at all"_s},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(captionOf(row.segments), row.caption) << row.name;
    }
}

TEST(EmbeddedCaption, RecordsAreFoundWhereverTheyAre) {
    const QByteArray big = photoshopResource(0x03ED, QByteArray(70'000, 'x'));
    const QByteArray all = big + photoshopResource(0x0404, iptc(120, "Behind"));
    EXPECT_EQ(captionOf(photoshopSegment(all.first(60'000)) + photoshopSegment(all.sliced(60'000))),
              u"Behind"_s)
        << "a resource that spans two segments";
    EXPECT_EQ(captionOf(iptcSegment(iptc(90, "Dallas")) + iptcSegment(iptc(120, "Second"))), u"Second"_s);
    EXPECT_EQ(captionOf(photoshopSegment("rubbish") + iptcSegment(iptc(120, "Second"))), u"Second"_s);
    EXPECT_EQ(captionOf("stray \xFF" + QByteArray(1, '\0') + iptcSegment(iptc(120, "Behind stray bytes"))),
              u"Behind stray bytes"_s);
    EXPECT_EQ(captionOf(segment(0xE2, QByteArray(65'000, 'x')).repeated(40) + iptcSegment(iptc(120, "Last"))),
              u"Last"_s)
        << "after 2.6 MB";
}

TEST(EmbeddedContext, TellsEachFieldThatItFinds) {
    const MetadataReading reading = readEmbedded(
        jpegWith(iptcSegment(iptc(55, "20240305") + iptc(90, " Dallas ") + iptc(95, "Texas") +
                             iptc(101, "USA") + iptc(92, "Stadium") + iptc(105, "Cup final") +
                             iptc(5, "Title") + iptc(25, "football") + iptc(25, " ") + iptc(25, "cup"))));
    EXPECT_EQ(
        reading.contextLines,
        tagged({u"IPTC dictionary keys found: City, Country/PrimaryLocationName, DateCreated, "
                "Headline, Keywords, ObjectName, Province/State, Sub-location"_s,
                u"IPTC City found: Dallas"_s, u"IPTC State/Province found: Texas"_s,
                u"IPTC Country found: USA"_s, u"IPTC Sublocation found: Stadium"_s,
                u"IPTC Headline found: Cup final"_s, u"IPTC DateCreated found: 20240305 -> 20240305"_s,
                u"IPTC Keywords found: 2 keywords"_s,
                u"JPEG context extracted: City: Dallas • State/Province: Texas • Country: USA • "
                "Venue/Location: Stadium • Date: 20240305 • Event: Cup final • Keywords: football, cup"_s}));
    EXPECT_EQ(reading.contextLines.last().section(u": "_s, 1), contextDescription(reading.facts.context));
}

TEST(EmbeddedContext, FallsBackForDatesAndFromRecordsToThePacketOnly) {
    const QByteArray packet = packetSegment(
        subject("<Iptc4xmpCore:Location>Field</Iptc4xmpCore:Location>"
                "<dc:subject><rdf:Bag><rdf:li>a</rdf:li><rdf:li>b</rdf:li></rdf:Bag></dc:subject>"
                "<ext:Event xmlns:ext='http://iptc.org/std/Iptc4xmpExt/2008-02-29/'><rdf:Alt>" +
                    item("x-default", "Derby") + "</rdf:Alt></ext:Event>",
                " photoshop:City='Austin' photoshop:State='Texas' "
                "photoshop:DateCreated='2024-03-05T23:30:00-05:00'"));
    const TestEntry changed{0x0132, 2, "2023:01:02 03:04:05"};
    const TestEntry taken{0x9003, 2, "2024:03:05 19:02:33"};
    const struct {
        QByteArray segments;
        QString description;
        QString line;
    } rows[] = {
        {iptcSegment(iptc(90, "Dallas")) + packet,
         u"City: Dallas • State/Province: Texas • Venue/Location: Field • Date: 2024-03-06 • Event: Derby • "
         "Keywords: a, b"_s,
         u"IPTC Event (string key) found: Derby"_s},
        {exifSegment({changed}, {taken}), u"Date: 2024-03-05"_s,
         u"EXIF DateTimeOriginal found: 2024:03:05 19:02:33 -> 2024-03-05"_s},
        {exifSegment({changed}), u"Date: 2023-01-02"_s,
         u"TIFF DateTime found: 2023:01:02 03:04:05 -> 2023-01-02"_s},
        {"", QString(), u"No context found in JPEG embedded metadata"_s},
    };
    for (const auto& row : rows) {
        const MetadataReading reading = readEmbedded(jpegWith(row.segments));
        EXPECT_EQ(contextDescription(reading.facts.context), row.description);
        EXPECT_TRUE(reading.contextLines.contains(u"[XMPWriter] "_s + row.line)) << row.line.toStdString();
    }
    EXPECT_EQ(readEmbedded(jpegWith(packet)).facts.context.keywords.size(), 2);
}

TEST(EmbeddedRights, AndCreatorAreTheFirstThatIsNotBlank) {
    const TestEntry copyright{0x8298, 2, "(c) TIFF"};
    const TestEntry artist{0x013B, 2, "Tina TIFF"};
    const QByteArray contact =
        packetSegment(subject("<Iptc4xmpCore:CreatorContactInfo "
                              "rdf:parseType='Resource'><Iptc4xmpCore:Name>Cora Contact</Iptc4xmpCore:Name>"
                              "</Iptc4xmpCore:CreatorContactInfo>"));
    const QByteArray others = contact + exifSegment({artist, copyright}, {comment(ascii("(c) EXIF"))});
    const struct {
        QByteArray segments;
        std::optional<QString> rights;
        std::optional<QString> creator;
    } rows[] = {
        {iptcSegment(iptc(80, "Ina") + iptc(116, "(c) IPTC")) + others, u"(c) IPTC"_s, u"Ina"_s},
        {iptcSegment(iptc(80, " ") + iptc(116, "")) + others, u"(c) EXIF"_s, u"Cora Contact"_s},
        {exifSegment({artist, copyright}), u"(c) TIFF"_s, u"Tina TIFF"_s},
        {"", std::nullopt, std::nullopt},
    };
    for (const auto& row : rows) {
        const ImageFacts facts = readEmbedded(jpegWith(row.segments)).facts;
        EXPECT_EQ(facts.rights, row.rights);
        EXPECT_EQ(facts.creator, row.creator);
    }
}

TEST(EmbeddedMetadata, AFileThatCannotBeOpenedIsMissingAndOneThatIsNoJpegHasNone) {
    const TemporaryImage file("no picture at all");
    const MetadataReading none = XMPWriter().readEmbedded(file.path(), QTimeZone::utc());
    EXPECT_EQ(none.facts, ImageFacts());
    EXPECT_TRUE(none.captionLines.isEmpty());
    for (const QString& path : {file.folder(), file.path() + u'x'}) {
        const auto read = [&path] { XMPWriter().readEmbedded(path, QTimeZone::utc()); };
        EXPECT_EQ(failureIn<XMPError>(read).kind(), XMPError::Case::fileMissing);
    }
}

} // namespace ostrelle
