// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/CorpusTools.h"
#include "metadata/JpegMetadataBytes.h"
#include "metadata/facts/XMPError.h"
#include "metadata/jpeg/EmbeddedCaptionEdit.h"
#include "metadata/rendition/ExtractError.h"
#include "metadata/rendition/JpegDecoder.h"
#include "support/RecordingLog.h"

#include <algorithm>

namespace ostrelle {

namespace {

/// The parts of a file, as the test's own walk finds them.
struct Parts {
    QList<QByteArray> segments; ///< each with the stray bytes before it; none that may hold a caption
    QByteArray picture;
};

bool mayHoldCaption(const QByteArray& payload) {
    return payload.startsWith("Exif") || payload.startsWith("Photoshop 3.0") ||
           payload.startsWith("http://ns.adobe.com/xap/1.0/") || payload.startsWith("MPF");
}

Parts partsOf(const QByteArray& jpeg) {
    Parts parts;
    qsizetype at = 2;
    while (at + 4 <= jpeg.size()) {
        const qsizetype begin = at;
        while (at + 1 < jpeg.size() &&
               (jpeg[at] != '\xFF' || jpeg[at + 1] == '\xFF' || jpeg[at + 1] == '\0' ||
                jpeg[at + 1] == '\x01' || (jpeg[at + 1] & 0xF8) == 0xD0)) {
            ++at;
        }
        if (at + 4 > jpeg.size() || jpeg[at + 1] == '\xDA') {
            break;
        }
        const qsizetype end = at + 2 + qFromBigEndian<quint16>(jpeg.constData() + at + 2);
        if (!mayHoldCaption(jpeg.sliced(at + 4))) {
            parts.segments.append(jpeg.sliced(begin, end - begin));
        } else if (at > begin) {
            parts.segments.append(jpeg.sliced(begin, at - begin));
        }
        at = end;
    }
    parts.picture = jpeg.sliced(std::min(at, jpeg.size()));
    return parts;
}

/// What a write may change in another tool's reading: the caption, its encoding, and positions in the file.
/// Both tools show texts that are not UTF-8 as they are stored.
bool isOwnChange(const QString& tag, const QString& before, const QString& after) {
    static const QRegularExpression own(
        u"^(System:|Composite:|ExifTool:|SourceFile|File:CurrentIPTCDigest|Photoshop:IPTCDigest|File:"
        u"(Copy[0-9]+:)?ExifByteOrder)"
        u"|:(ImageDescription|UserComment|Caption-Abstract|CodedCharacterSet|ThumbnailOffset|MPImageStart|"
        u"MPImageLength)$"
        u"|^XMP-dc(:Copy[0-9]+)?:Description"
        u"|^(Exif.Image.ImageDescription|Exif.Photo.UserComment|Exif.Image.ExifTag|Iptc.Application2.Caption"
        u"|Iptc.Envelope.CharacterSet|Xmp.dc.description)"_s);
    static const QRegularExpression odd(u"[^\\x00-\\x7F]"_s);
    return own.match(tag).hasMatch() ||
           (before.contains(odd) && QString(before).remove(odd) == QString(after).remove(odd));
}

class EmbeddedCorpus : public WrittenCorpus {
protected:
    EmbeddedCorpus() : WrittenCorpus(u"jpeg"_s) {}

    void write(const QString& path, const QString& text) const override {
        RecordingLog log;
        XMPWriter().writeEmbeddedCaption(text, path, log);
    }
    void expectRefusal(const QString& path, const Error& error) override {
        const bool isParse = dynamic_cast<const XMPError&>(error).kind() == XMPError::Case::parseFailed;
        if (isParse) {
            EXPECT_THROW(decodeJpeg(path, 64), ExtractError);
        } else {
            EXPECT_NO_THROW(decodeJpeg(path, 64));
            ++refused;
        }
    }

    int refused = 0;
};

} // namespace

TEST_F(EmbeddedCorpus, AWriteKeepsThePictureAndEveryOtherSegment) {
    for (const QString& name : names) {
        SCOPED_TRACE(name.toStdString());
        const Parts old = partsOf(contentsOf(before.filePath(name)));
        const Parts written = partsOf(contentsOf(after.filePath(name)));
        EXPECT_EQ(written.segments, old.segments);
        EXPECT_TRUE(written.picture == old.picture);
        EXPECT_EQ(XMPWriter().readEmbedded(after.filePath(name), QTimeZone::utc()).facts.caption, caption);
        expectTheSameOfAnyWrite(after.filePath(name));
    }
    std::printf("%lld of %lld files written, %d refused\n", names.size(), files.size(), refused);
    EXPECT_LT(refused, files.size() / 20);
}

TEST_F(EmbeddedCorpus, OtherToolsReadTheCaptionAndAllElseAsBefore) {
    const QMap<QString, Tags> old = readWithExiftool(before.path());
    const QMap<QString, Tags> written = readWithExiftool(after.path());
    // From 0.28 on it stops at an emoji in a user comment, whoever wrote it.
    const bool canExiv2PrintIt = output(u"exiv2"_s, {u"--version"_s}, before.path()).startsWith("exiv2 0.27");
    for (const QString& name : names) {
        SCOPED_TRACE(name.toStdString());
        const Tags& tags = written[name];
        EXPECT_EQ(tags[u"IPTC:Caption-Abstract"_s], caption);
        EXPECT_EQ(tags[u"IFD0:ImageDescription"_s], caption);
        EXPECT_EQ(tags[u"ExifIFD:UserComment"_s], caption);
        if (!old[name].contains(u"ExifTool:Error"_s)) {
            EXPECT_EQ(differences(old[name], tags, isOwnChange), "");
        }
        if (canExiv2PrintIt) {
            EXPECT_EQ(differences(readWithExiv2(before.path(), name), readWithExiv2(after.path(), name),
                                  isOwnChange),
                      "");
        }
    }
}

TEST(EmbeddedComment, IsReadByOtherToolsInEveryScript) {
    const QStringList captions = {u"山田　太郎"_s, u"第一"_s,        u"Ā"_s,          u"مرحبا بالعالم"_s,
                                  u"Zoë & José"_s, u"O’Neil 第一"_s, u"\U0001F3C8"_s, u"山 \U0001F3C8"_s};
    const QTemporaryDir folder;
    for (const QByteArray& block :
         {QByteArray("II*\0\x08\0\0\0\0\0\0\0\0\0", 14), QByteArray("MM\0*\0\0\0\x08\0\0\0\0\0\0", 14)}) {
        for (const QString& text : captions) {
            const QByteArray jpeg = jpegWith(segment(0xE1, QByteArray("Exif\0\0", 6) + block));
            writeFile(folder.filePath(text + u".jpg"_s), withEmbeddedCaption(jpeg, text));
        }
        const QMap<QString, Tags> readings = readWithExiftool(folder.path());
        for (const QString& text : captions) {
            EXPECT_EQ(readings[text + u".jpg"_s][u"ExifIFD:UserComment"_s], text);
            if (text.toUcs4().size() == text.size()) { // exiv2 knows only the basic plane
                EXPECT_TRUE(
                    readWithExiv2(folder.path(), text + u".jpg"_s)[u"Exif.Photo.UserComment0"_s].endsWith(
                        text));
            }
        }
    }
}

} // namespace ostrelle
