// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/JpegMetadataBytes.h"
#include "metadata/XMPWriter.h"
#include "metadata/facts/XMPError.h"
#include "metadata/jpeg/EmbeddedCaptionEdit.h"
#include "metadata/rendition/ExtractError.h"
#include "metadata/rendition/JpegDecoder.h"
#include "platform/Files.h"
#include "support/Corpus.h"
#include "support/RecordingLog.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtEndian>
#include <algorithm>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString caption = u"Auburn's Zoë O'Neil <12> & \"R\" \U0001F3C8 漢字 scores."_s;
constexpr qint64 maximumSize = qint64{64} << 20;

/// A file taken apart by a walk of the test's own.
struct Parts {
    QList<QByteArray> segments; ///< with the stray bytes in front of each, without those that hold captions
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

bool isDecodable(const QString& path) {
    try {
        decodeJpeg(path, 64);
        return true;
    } catch (const ExtractError&) {
        return false;
    }
}

QByteArray output(const QString& program, const QStringList& arguments, const QString& folder) {
    QProcess process;
    process.setWorkingDirectory(folder);
    process.setStandardErrorFile(QProcess::nullDevice());
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"PERL_HASH_SEED"_s, u"0"_s); // or exiftool's choice among doubled tags varies
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    EXPECT_TRUE(process.waitForFinished(-1)) << program.toStdString();
    return process.readAllStandardOutput();
}

using Tags = QMap<QString, QString>;

/// All that exiftool reads in each file of a folder, thumbnails and other pictures in full.
QMap<QString, Tags> readWithExiftool(const QString& folder) {
    const QByteArray json =
        output(u"exiftool"_s, {u"-j"_s, u"-a"_s, u"-u"_s, u"-G1:4"_s, u"-b"_s, u"."_s}, folder);
    QMap<QString, Tags> readings;
    for (const QJsonValue& entry : QJsonDocument::fromJson(json).array()) {
        const QJsonObject object = entry.toObject();
        Tags& tags = readings[QFileInfo(object.value(u"SourceFile"_s).toString()).fileName()];
        for (auto tag = object.begin(); tag != object.end(); ++tag) {
            const QByteArray value = QJsonDocument(QJsonArray{tag.value()}).toJson(QJsonDocument::Compact);
            tags.insert(tag.key(),
                        tag.value().isString() ? tag.value().toString() : QString::fromUtf8(value));
        }
    }
    return readings;
}

/// Each line of its output is "key  type  value"; a value may run over several lines.
Tags readWithExiv2(const QString& folder, const QString& name) {
    static const QRegularExpression line(u"^((?:Exif|Iptc|Xmp)\\.\\S+)\\s+\\S+\\s*(.*)$"_s);
    Tags tags;
    QString key;
    int place = 0;
    for (const QByteArray& raw : output(u"exiv2"_s, {u"-q"_s, u"-PEIXkyv"_s, name}, folder).split('\n')) {
        const QString text = QString::fromUtf8(raw);
        const QRegularExpressionMatch match = line.match(text);
        if (match.hasMatch()) {
            key = match.captured(1);
            for (place = 0; tags.contains(key + QString::number(place));) {
                ++place;
            }
        }
        if (key.isEmpty()) {
            continue;
        }
        tags[key + QString::number(place)] += match.hasMatch() ? match.captured(2) : text;
    }
    return tags;
}

/// What a caption write may change for another tool: the caption, its encoding, and places in the file.
bool isOwnTag(const QString& tag) {
    static const QRegularExpression own(
        u"^(System:|Composite:|ExifTool:|SourceFile|File:CurrentIPTCDigest|Photoshop:IPTCDigest|File:"
        u"(Copy[0-9]+:)?ExifByteOrder)"
        u"|:(ImageDescription|UserComment|Caption-Abstract|CodedCharacterSet|ThumbnailOffset|MPImageStart|"
        u"MPImageLength)$"
        u"|^XMP-dc(:Copy[0-9]+)?:Description"
        u"|^(Exif.Image.ImageDescription|Exif.Photo.UserComment|Exif.Image.ExifTag|Iptc.Application2.Caption"
        u"|Iptc.Envelope.CharacterSet|Xmp.dc.description)"_s);
    return own.match(tag).hasMatch();
}

/// True for texts in another encoding than UTF-8, which both tools then show as they are stored.
bool isOtherEncoding(const QString& before, const QString& after) {
    static const QRegularExpression odd(u"[^\\x00-\\x7F]"_s);
    return before.contains(odd) && QString(before).remove(odd) == QString(after).remove(odd);
}

QStringList differences(const Tags& before, const Tags& after) {
    QStringList different;
    for (const QString& tag : (before.keys() + after.keys())) {
        const bool isSame =
            before.value(tag) == after.value(tag) && before.contains(tag) == after.contains(tag);
        if (!isSame && !isOwnTag(tag) && !isOtherEncoding(before.value(tag), after.value(tag))) {
            different.append(tag + u": "_s + before.value(tag).left(80) + u" -> "_s +
                             after.value(tag).left(80));
        }
    }
    different.removeDuplicates();
    return different;
}

/// The corpus written to: the files that took a caption, beside their originals.
class WrittenCorpus {
public:
    explicit WrittenCorpus(const QStringList& files) {
        RecordingLog log;
        for (const QString& path : files) {
            const QString name = QFileInfo(path).fileName();
            const QString copy = m_after.filePath(name);
            EXPECT_TRUE(QFile::copy(path, copy));
            EXPECT_TRUE(QFile::setPermissions(copy, QFile::ReadOwner | QFile::WriteOwner));
            try {
                XMPWriter().writeEmbeddedCaption(caption, copy, log);
                m_names.append(name);
                EXPECT_TRUE(QFile::copy(path, m_before.filePath(name)));
            } catch (const XMPError& error) {
                const bool isParse = error.kind() == XMPError::Case::parseFailed;
                EXPECT_EQ(isParse, !isDecodable(path)) << path.toStdString();
                EXPECT_EQ(readFile(copy, maximumSize), readFile(path, maximumSize)) << path.toStdString();
                (isParse ? m_undecodable : m_refused) += 1;
                QFile::remove(copy);
            }
        }
    }

    const QStringList& names() const { return m_names; }
    QString before() const { return m_before.path(); }
    QString after() const { return m_after.path(); }
    int undecodable() const { return m_undecodable; }
    int refused() const { return m_refused; }

private:
    QTemporaryDir m_before;
    QTemporaryDir m_after;
    QStringList m_names;
    int m_undecodable = 0;
    int m_refused = 0;
};

} // namespace

TEST(EmbeddedCorpus, AWriteKeepsThePictureAndEveryOtherSegment) {
    const QStringList files = corpusFiles(u"jpeg"_s);
    SKIP_WITHOUT_CORPUS(files);
    const WrittenCorpus corpus(files);
    RecordingLog log;
    for (const QString& name : corpus.names()) {
        SCOPED_TRACE(name.toStdString());
        const QString path = corpus.after() + u'/' + name;
        const Parts before = partsOf(readFile(corpus.before() + u'/' + name, maximumSize));
        const QByteArray written = readFile(path, maximumSize);
        EXPECT_EQ(partsOf(written).segments, before.segments);
        EXPECT_TRUE(partsOf(written).picture == before.picture);
        EXPECT_EQ(XMPWriter().readEmbeddedCaption(path, log), caption);
        XMPWriter().writeEmbeddedCaption(caption, path, log);
        EXPECT_TRUE(readFile(path, maximumSize) == written) << "a second write of the same caption";
        XMPWriter().writeEmbeddedCaption(u"Something else"_s, path, log);
        XMPWriter().writeEmbeddedCaption(caption, path, log);
        EXPECT_TRUE(readFile(path, maximumSize) == written) << "a write after another caption";
    }
    std::printf("%d of %d files written, %d refused, %d not decodable\n",
                static_cast<int>(corpus.names().size()), static_cast<int>(files.size()), corpus.refused(),
                corpus.undecodable());
    EXPECT_LT(corpus.refused(), files.size() / 20);
}

TEST(EmbeddedCorpus, OtherToolsReadTheCaptionAndAllElseAsBefore) {
    const QStringList files = corpusFiles(u"jpeg"_s);
    SKIP_WITHOUT_CORPUS(files);
    const WrittenCorpus corpus(files);
    const QMap<QString, Tags> before = readWithExiftool(corpus.before());
    const QMap<QString, Tags> after = readWithExiftool(corpus.after());
    for (const QString& name : corpus.names()) {
        SCOPED_TRACE(name.toStdString());
        const Tags& tags = after[name];
        EXPECT_EQ(tags[u"IPTC:Caption-Abstract"_s], caption);
        EXPECT_EQ(tags[u"IFD0:ImageDescription"_s], caption);
        EXPECT_EQ(tags[u"ExifIFD:UserComment"_s], caption);
        if (!before[name].contains(u"ExifTool:Error"_s)) {
            EXPECT_EQ(differences(before[name], tags).join(u'\n').toStdString(), "");
        }
        EXPECT_EQ(differences(readWithExiv2(corpus.before(), name), readWithExiv2(corpus.after(), name))
                      .join(u'\n')
                      .toStdString(),
                  "");
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
            replaceFile(folder.filePath(text + u".jpg"_s), withEmbeddedCaption(jpeg, text));
        }
        const QMap<QString, Tags> readings = readWithExiftool(folder.path());
        for (const QString& text : captions) {
            EXPECT_EQ(readings[text + u".jpg"_s][u"ExifIFD:UserComment"_s], text);
            if (text.toUcs4().size() == text.size()) { // exiv2 knows no characters beyond the basic plane
                EXPECT_TRUE(
                    readWithExiv2(folder.path(), text + u".jpg"_s)[u"Exif.Photo.UserComment0"_s].endsWith(
                        text));
            }
        }
    }
}

TEST(EmbeddedCorpus, ReadsNeverFail) {
    const QStringList files = corpusFiles(u"jpeg"_s) + corpusFiles(u"raw"_s) + corpusFiles(u"sidecars"_s);
    SKIP_WITHOUT_CORPUS(files);
    RecordingLog log;
    for (const QString& path : files) {
        SCOPED_TRACE(path.toStdString());
        EXPECT_NO_THROW(XMPWriter().readEmbeddedCaption(path, log));
        EXPECT_NO_THROW(XMPWriter().readEmbeddedContext(path, QTimeZone::utc(), log));
        EXPECT_NO_THROW(XMPWriter().readEmbeddedRights(path));
        EXPECT_NO_THROW(XMPWriter().readEmbeddedCreator(path));
    }
}

} // namespace ostrelle
