// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/EditRefusal.h"
#include "metadata/EmbeddedCaptionEdit.h"
#include "metadata/EmbeddedMetadata.h"
#include "metadata/JpegMetadataBytes.h"
#include "metadata/MetadataText.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStringEncoder>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QByteArray block(const QByteArray& bytes) {
    return segment(0xE1, QByteArray("Exif\0\0", 6) + bytes);
}

const QByteArray emptyLittleEndian("II*\0\x08\0\0\0\0\0\0\0\0\0", 14);
const QByteArray emptyBigEndian("MM\0*\0\0\0\x08\0\0\0\0\0\0", 14);

QByteArray output(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    EXPECT_TRUE(process.waitForFinished(120'000)) << program.toStdString();
    return process.readAllStandardOutput();
}

QByteArray utf16(const QString& text, bool isBigEndian) {
    QStringEncoder encoder(isBigEndian ? QStringConverter::Utf16BE : QStringConverter::Utf16LE,
                           QStringConverter::Flag::Stateless);
    return encoder.encode(text);
}

} // namespace

TEST(ExifCaption, IsReadByEveryToolInEveryScript) {
    const QStringList captions = {u"山田　太郎"_s,    u"第一"_s,       u"一　一"_s,        u"Ā"_s,
                                  u"مرحبا بالعالم"_s, u"Zoë & José"_s, u"O’Neil – 第一"_s, u"\U0001F3C8"_s,
                                  u"山 \U0001F3C8"_s};
    const QTemporaryDir folder;
    for (const QByteArray& empty : {emptyLittleEndian, emptyBigEndian}) {
        QStringList paths;
        for (const QString& caption : captions) {
            const QByteArray jpeg = withEmbeddedCaption(jpegWith(block(empty)), caption);
            EXPECT_EQ(parseEmbeddedMetadata(jpeg)->exif->userComment, caption);
            paths.append(folder.filePath(u"%1.jpg"_s.arg(paths.size())));
            QFile file(paths.last());
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
            file.write(jpeg);
        }
        const QJsonArray readings =
            QJsonDocument::fromJson(output(u"exiftool"_s, QStringList{u"-j"_s, u"-UserComment"_s} + paths))
                .array();
        for (qsizetype index = 0; index < captions.size(); ++index) {
            const QString& caption = captions[index];
            EXPECT_EQ(readings[index][u"UserComment"_s].toString(), caption);
            const bool isBasicPlane = caption.toUcs4().size() == caption.size(); // exiv2 knows no others
            const QByteArray value =
                output(u"exiv2"_s, {u"-PEv"_s, u"-KExif.Photo.UserComment"_s, paths[index]});
            EXPECT_TRUE(!isBasicPlane || value.trimmed().endsWith(caption.toUtf8())) << value.constData();
        }
    }
}

TEST(ExifCaption, IsReadInTheBlocksByteOrderUnlessThatGivesNonsense) {
    const struct {
        QString text;
        bool isOrderOfBlock;
    } rows[] = {
        {u"山田　太郎"_s, true},
        {u"第一"_s, true},
        {u"Zoë"_s, true},
        {u"Zoë"_s, false},
        {u"Zoë \U0001F3C8\n"_s, false},
        {u"山田 and 第一 win"_s, false},
        {u"한국 선수 \U0001F3C8"_s, true},
    };
    for (const auto& row : rows) {
        for (const bool isBigEndian : {false, true}) {
            const QByteArray bytes = utf16(row.text, isBigEndian == row.isOrderOfBlock) + QByteArray(4, '\0');
            EXPECT_EQ(decodeUserComment(QByteArray("UNICODE\0", 8) + bytes, isBigEndian), row.text);
        }
    }
}

TEST(ExifCaption, AnEditDoneTwiceIsAsDoneOnce) {
    // A value that runs on behind the block, and a next directory in the header, whose bytes an edit changes.
    const QByteArray cutValue("MM\0*\0\0\0\x08\0\1\x01\x1A\0\5\1\0\0\0\0\0\0\x1A\0\0\0\0begun...", 34);
    const QByteArray nextInHeader("II*\0\x08\0\0\0\0\0\4\0\0\0", 14);
    for (const QByteArray& odd : {emptyLittleEndian, cutValue, nextInHeader}) {
        for (const QString& caption : {u"Old"_s, u"An old caption"_s, u"第一"_s, QString(5'000, u'x')}) {
            const QByteArray once = withEmbeddedCaption(jpegWith(block(odd)), caption);
            EXPECT_EQ(withEmbeddedCaption(once, caption), once);
            EXPECT_EQ(withEmbeddedCaption(withEmbeddedCaption(once, u"Another"_s), caption), once);
        }
    }
}

} // namespace ostrelle
