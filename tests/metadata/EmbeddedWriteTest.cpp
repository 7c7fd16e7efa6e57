// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/JpegMetadataBytes.h"
#include "metadata/SidecarBytes.h"
#include "metadata/facts/XMPError.h"
#include "platform/Files.h"
#include "support/Failure.h"
#include "support/FileFacts.h"
#include "support/FullDisk.h"
#include "support/RecordingLog.h"
#include "support/Unprivileged.h"

#include <QCryptographicHash>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString caption = u"Zoë O'Neil \U0001F3C8 漢字 & <co> \"wins\"\nagain"_s;

/// The bytes from the first scan on.
QByteArray pictureOf(const QByteArray& jpeg) {
    return jpeg.sliced(jpeg.indexOf(QByteArray("\xFF\xDA\0\x0C", 4)));
}

QByteArray written(const QByteArray& jpeg, const QString& text, RecordingLog& log) {
    const TemporaryImage file(jpeg);
    XMPWriter().writeEmbeddedCaption(text, file.path(), log);
    return file.bytes();
}

QByteArray written(const QByteArray& jpeg, const QString& text = caption) {
    RecordingLog log;
    return written(jpeg, text, log);
}

std::optional<QString> readBack(const QByteArray& jpeg) {
    return readEmbedded(jpeg).facts.caption;
}

XMPError::Case refusalOf(const QString& path, RecordingLog& log, const QString& text = caption) {
    const QByteArray before = contentsOf(path);
    const auto write = [&] { XMPWriter().writeEmbeddedCaption(text, path, log); };
    const XMPError::Case kind = failureIn<XMPError>(write).kind();
    EXPECT_EQ(contentsOf(path), before) << "a refused write leaves the file as it was";
    return kind;
}

XMPError::Case refusalOf(const QByteArray& jpeg, RecordingLog& log, const QString& text = caption) {
    const TemporaryImage file(jpeg);
    const XMPError::Case kind = refusalOf(file.path(), log, text);
    EXPECT_EQ(filesIn(file.folder()).size(), 1);
    return kind;
}

} // namespace

TEST(EmbeddedWrite, PutsTheSameTextIntoAllPlacesAndKeepsThePicture) {
    const QByteArray bare = jpegWith("");
    const QByteArray jpeg = written(bare);
    EXPECT_EQ(pictureOf(jpeg), pictureOf(bare));
    EXPECT_EQ(readBack(jpeg), caption);
    const QByteArray utf8 = caption.toUtf8();
    EXPECT_TRUE(jpeg.contains(iptc(120, utf8)));
    EXPECT_TRUE(jpeg.contains(utf8Declared));
    EXPECT_TRUE(jpeg.contains(utf8 + '\0')) << "the image description";
    EXPECT_EQ(jpeg.count("UNICODE"), 1) << "one user comment";
    EXPECT_FALSE(jpeg.contains("ns.adobe.com")) << "no packet is added";
    EXPECT_EQ(jpeg.indexOf("Exif"), bare.indexOf("JFIF") + 14 + 4) << "EXIF after JFIF";
    const QByteArray plain = written(bare, u"Plain"_s);
    EXPECT_TRUE(plain.contains(QByteArray("ASCII\0\0\0Plain", 13)));
    EXPECT_FALSE(plain.contains("\x1B%G")) << "plain text needs no encoding";
}

TEST(EmbeddedWrite, ASecondWriteIsTheSameAsTheFirst) {
    const QByteArray once = written(jpegWith(""));
    EXPECT_EQ(written(once), once);
    EXPECT_EQ(written(written(once, u"Something that is much longer than the caption was, much longer."_s)),
              once);
    EXPECT_EQ(written(written(once, u"S"_s)), once);
    for (const QByteArray& odd :
         {// a value that extends past the block, to where the edit moves a directory
          QByteArray("MM\0*\0\0\0\x08\0\1\x01\x1A\0\5\1\0\0\0\0\0\0\x1A\0\0\0\0begun...", 34),
          // a next directory inside the header, whose bytes the edit changes
          QByteArray("II*\0\x08\0\0\0\0\0\4\0\0\0", 14)}) {
        const QByteArray oddOnce =
            written(jpegWith(segment(0xE1, QByteArray("Exif\0\0", 6) + odd)), QString(5000, u'x'));
        EXPECT_EQ(written(oddOnce, QString(5000, u'x')), oddOnce);
    }
}

TEST(EmbeddedWrite, CaptionsOfAnyLengthReadBack) {
    for (const QString& text : {QString(), u"S"_s, u"Sho"_s, QString(1250, u'ë'), QString(20'000, u'x')}) {
        EXPECT_EQ(readBack(written(jpegWith(""), text)), text) << text.size();
    }
    RecordingLog log;
    EXPECT_EQ(refusalOf(jpegWith(""), log, QString(70'000, u'x')), XMPError::Case::writeFailed);
}

TEST(EmbeddedWrite, KeepsTheOtherFieldsAndConvertsTheirTextWithTheEncoding) {
    const QByteArray digest = photoshopResource(0x0425, QByteArray(16, 'd'));
    const QByteArray thumbnail = photoshopResource(0x040C, "odd");
    const QByteArray segments = photoshopSegment(
        thumbnail +
        photoshopResource(0x0404, iptc(80, "Andr\xE9") + iptc(120, "Old") + iptc(90, "K\xC3\xB6ln") +
                                      iptc(120, "Older") + dataSet(3, 10, "\xE9") + "\0\0") +
        digest);
    RecordingLog log;
    const QByteArray jpeg = written(jpegWith(segments), caption, log);
    EXPECT_EQ(log.lines,
              QStringList(u"[XMPWriter] Preserving IPTC fields: Byline, Caption/Abstract, City"_s));
    EXPECT_TRUE(jpeg.contains(utf8Declared + iptc(80, "Andr\xC3\xA9") + iptc(120, caption.toUtf8()) +
                              iptc(90, "K\xC3\xB6ln") + dataSet(3, 10, "\xE9")));
    EXPECT_TRUE(jpeg.contains(thumbnail));
    EXPECT_TRUE(jpeg.contains(digest)) << "a digest that did not match stays";
    EXPECT_TRUE(written(jpegWith(segments), u"Plain"_s).contains(iptc(80, "Andr\xE9") + iptc(120, "Plain")))
        << "plain text leaves the encoding alone";
}

TEST(EmbeddedWrite, KeepsTheDigestOfTheRecordsTrue) {
    const QByteArray records = iptc(120, "Old");
    const auto digestOf = [](const QByteArray& bytes) {
        return photoshopResource(0x0425, QCryptographicHash::hash(bytes, QCryptographicHash::Md5));
    };
    const QByteArray jpeg =
        written(jpegWith(photoshopSegment(photoshopResource(0x0404, records) + digestOf(records))), u"New"_s);
    EXPECT_TRUE(jpeg.contains(digestOf(iptc(120, "New"))));
}

TEST(EmbeddedWrite, SetsTheDescriptionOfThePacketAndNothingElseInIt) {
    const QByteArray before = "<dc:title>T</dc:title>";
    const QByteArray escaped =
        "Zo\xC3\xAB O'Neil \xF0\x9F\x8F\x88 \xE6\xBC\xA2\xE5\xAD\x97 &amp; &lt;co&gt; \"wins\"\nagain";
    const QByteArray padding = "\n   \n<?xpacket end='w'?>";
    const QByteArray packet =
        subject(before + described(item("de", "Alt") + item("x-default", "Old"))) + padding;
    EXPECT_TRUE(
        written(jpegWith(packetSegment(packet)))
            .contains(packetSegment(
                subject(before + described(item("de", "Alt") + item("x-default", escaped))) + padding)));
    const QByteArray attribute = written(jpegWith(packetSegment(subject(before, " dc:description='Old'"))));
    EXPECT_EQ(readBack(attribute), caption);
    EXPECT_FALSE(attribute.contains("Old"));
    const QByteArray newAlt =
        "<rdf:Alt xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\"><rdf:li "
        "xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\" xml:lang=\"x-default\">" +
        escaped + "</rdf:li></rdf:Alt>";
    const std::pair<QByteArray, QByteArray> rows[] = {
        {"Old<!-- c --> Old", "<!-- c -->" + newAlt},
        {" <rdf:Seq><rdf:li>Old</rdf:li></rdf:Seq>", " " + newAlt},
        {"Old <rdf:Alt>" + item("x-default", "Old") + "</rdf:Alt>",
         "<rdf:Alt>" + item("x-default", escaped) + "</rdf:Alt>"},
    };
    for (const auto& [old, expected] : rows) {
        const auto whole = [](const QByteArray& content) {
            return packetSegment(subject("<dc:description>" + content + "</dc:description>"));
        };
        EXPECT_TRUE(written(jpegWith(whole(old))).contains(whole(expected))) << old.constData();
    }
    const QByteArray without = packetSegment(subject(before));
    EXPECT_TRUE(written(jpegWith(without)).contains(without)) << "no description is added";
}

TEST(EmbeddedWrite, LetsThePaddingOfAFullPacketGo) {
    const auto packet = [](const QByteArray& text, const QByteArray& behind) {
        return subject(described(item("x-default", text))) + behind + "<?xpacket end='w'?>";
    };
    const qsizetype room = 65'533 - 29 - packet("", "").size();
    const QByteArray jpeg =
        written(jpegWith(packetSegment(packet("", QByteArray(room, ' ')))), u"Much longer"_s);
    EXPECT_TRUE(jpeg.contains(packetSegment(packet("Much longer", QByteArray(room - 11, ' ')))));
    RecordingLog log;
    const QByteArray full = packet("", "<!--" + QByteArray(room - 7, 'x') + "-->");
    EXPECT_EQ(refusalOf(jpegWith(packetSegment(full)), log), XMPError::Case::writeFailed);
    EXPECT_TRUE(log.lines.last().contains(u"a metadata segment has no room for the caption"));
}

TEST(EmbeddedWrite, LeavesEveryByteOfTheExifBlockInPlace) {
    const QByteArray exif =
        exifSegment({{0x010F, 2, "Camera maker"}, {0x0132, 2, "2024:03:05 19:02:33"}},
                    {{0x9003, 2, "2024:03:05 19:02:33"}, {0x927C, 7, "maker note with offsets"}});
    const QByteArray jpeg = written(jpegWith(exif));
    // Everything after the offset of the first directory, which moves to the end for its new entry.
    EXPECT_EQ(jpeg.indexOf(exif.sliced(18)), jpegWith(exif).indexOf(exif.sliced(18)));
    EXPECT_EQ(readEmbedded(jpeg).facts.context.dateISO8601, u"2024-03-05"_s);
}

TEST(EmbeddedWrite, RefusesWhatItCouldOnlyHarm) {
    const QByteArray exif = exifSegment({description("Old")});
    QByteArray outside = exifSegment({{0x010F, 2, "Camera maker"}});
    outside.replace(bigEndian(quint32{12}), bigEndian(quint32{60}));
    const struct {
        QByteArray jpeg;
        QString reason;
    } rows[] = {
        {jpegWith(exif + exif), u"it has several EXIF segments"_s},
        {jpegWith(segment(0xE1, QByteArray("Exif\0\0rubbish", 13))),
         u"its EXIF segment has no TIFF header"_s},
        {jpegWith(exif.first(16) + bigEndian(quint16{0xFFFF}) + exif.sliced(18)),
         u"an EXIF directory is damaged"_s},
        {jpegWith(outside), u"EXIF data lie outside their segment"_s},
        {jpegWith(iptcSegment(dataSet(1, 90, "\x1B/odd") + iptc(90, "\xE9"))),
         u"its IPTC texts are in an unknown encoding"_s},
        {jpegWith(packetSegment("<x:xmpmeta><dc:description>")), u"its XMP packet is damaged"_s},
        {jpegWith("") + "trailer" + QByteArray("AXS!12345678", 12),
         u"its AFCP trailer would point elsewhere"_s},
    };
    for (const auto& row : rows) {
        RecordingLog log;
        EXPECT_EQ(refusalOf(row.jpeg, log), XMPError::Case::writeFailed);
        EXPECT_TRUE(log.lines.contains(u"[XMPWriter] ERROR: Failed to finalize image to temp file"_s));
        EXPECT_EQ(log.lines.last(),
                  u"[XMPWriter] Nothing was written into IMG_0001.JPG, because %1."_s.arg(row.reason));
    }
}

TEST(EmbeddedWrite, RefusesAPictureThatCannotBeDecoded) {
    RecordingLog log;
    const QByteArray jpeg = jpegWith("");
    EXPECT_EQ(refusalOf(jpeg.first(jpeg.size() / 2), log), XMPError::Case::parseFailed);
    EXPECT_EQ(refusalOf(QByteArray("no picture at all"), log), XMPError::Case::parseFailed);
    EXPECT_EQ(refusalOf(u"/nowhere/IMG_0001.JPG"_s, log), XMPError::Case::fileMissing);
}

TEST(EmbeddedWrite, KeepsWhatFollowsThePictureAndFindsItAgain) {
    // An index as phones write it, for the file's own picture and a second one after it.
    const QByteArray second = jpegFile(SportsScene(16, 16, 2).image());
    const auto index = [](quint32 firstSize, quint32 secondOffset) {
        const QByteArray entries = bigEndian(quint32{0x20030000}) + bigEndian(firstSize) +
                                   QByteArray(8, '\0') + bigEndian(quint32{0}) + bigEndian(quint32{1}) +
                                   bigEndian(secondOffset) + QByteArray(4, '\0');
        return segment(0xE2,
                       QByteArray("MPF\0MM\0*\0\0\0\x08", 12) + tiffDirectory({{0xB002, 7, entries}}, 8));
    };
    // The packet comes after the index, the new segments before it.
    const QByteArray packet = packetSegment(subject("", " dc:description='Old'"));
    const auto size = static_cast<quint32>(jpegWith(index(0, 0) + packet).size());
    const auto header = static_cast<quint32>(20 + 4 + 4);
    const QByteArray jpeg = written(jpegWith(index(size, size - header) + packet) + second + "audio");
    EXPECT_TRUE(jpeg.endsWith(second + "audio"));
    const auto newSize = static_cast<quint32>(jpeg.size() - second.size() - 5);
    const auto newHeader = static_cast<quint32>(jpeg.indexOf(QByteArray("MPF\0", 4)) + 4);
    EXPECT_TRUE(jpeg.contains(index(newSize, newSize - newHeader)));
}

TEST(EmbeddedWrite, KeepsASignedManifestAndSaysOnceThatItDoesNotMatch) {
    const QByteArray manifest = segment(0xEB, QByteArray("JP\0\1\0\0\0\1", 8) + "jumb c2pa manifest") +
                                segment(0xEB, QByteArray("JP\0\1\0\0\0\2", 8) + "more of the c2pa manifest");
    RecordingLog log;
    EXPECT_TRUE(written(jpegWith(manifest), caption, log).contains(manifest));
    EXPECT_EQ(log.lines,
              QStringList(u"[XMPWriter] IMG_0001.JPG carries content credentials (C2PA), whose signature "
                          "does not match the file any more."_s));
}

TEST(EmbeddedWrite, TellsWhatTheSystemRefuses) {
    const UnprivilegedFolder folder;
    const QString path = folder.filePath(u"IMG_0001.JPG"_s);
    const QByteArray jpeg = jpegWith("");
    replaceFile(path, jpeg);
    const auto failed = [&path, &folder](const QString& event, const QString& reason) {
        return QStringList({u"[XMPWriter] ERROR: "_s + event + u" failed for IMG_0001.JPG"_s,
                            u"[XMPWriter] Parent directory: "_s + folder.path(),
                            u"[XMPWriter] Error: Could not write %1: %2."_s.arg(path, reason)});
    };
    RecordingLog log;
    setMode(folder.path(), 0500);
    EXPECT_EQ(refusalOf(path, log), XMPError::Case::writeFailed);
    setMode(folder.path(), 0700);
    EXPECT_EQ(log.lines, failed(u"File coordination"_s, u"Permission denied"_s)
                             << u"[XMPWriter] This usually indicates a permission issue. Please grant folder "
                                "access permissions."_s);
    log.lines.clear();
    {
        const FullDisk full(static_cast<rlim_t>(jpeg.size() / 2));
        EXPECT_EQ(refusalOf(path, log), XMPError::Case::writeFailed);
    }
    EXPECT_EQ(log.lines,
              QStringList(u"[XMPWriter] ERROR: Failed to copy temp file to final location: Could not write "
                          "%1: File too large."_s.arg(path))
                  << failed(u"Write operation"_s, u"File too large"_s));
    EXPECT_EQ(filesIn(folder.path()).size(), 1);
}

TEST(EmbeddedWrite, ReadsAgainWhatAnotherProgramReplacesMeanwhile) {
    TemporaryImage file(jpegWith(iptcSegment(iptc(90, "City"))));
    const QByteArray theirs = iptc(90, "City") + iptc(105, "Headline");
    RecordingLog log;
    log.onLine = [&](const QString& line) {
        if (line.contains(u"Preserving")) { // logged once, before the write
            file.write(jpegWith(iptcSegment(theirs)));
        }
    };
    XMPWriter().writeEmbeddedCaption(caption, file.path(), log);
    EXPECT_EQ(readBack(file.bytes()), caption);
    EXPECT_TRUE(file.bytes().contains(theirs));
    EXPECT_TRUE(log.lines.last().contains(u"changed by another program, reading it again"_s));
}

} // namespace ostrelle
