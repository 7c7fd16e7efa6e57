// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Error.h"
#include "support/Corpus.h"
#include "support/FileFacts.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <functional>

// What other tools read from a file before and after a caption is written into it.

namespace ostrelle {

using namespace Qt::StringLiterals;

using Tags = QMap<QString, QString>;

inline QByteArray output(const QString& program, const QStringList& arguments, const QString& folder) {
    qputenv("PERL_HASH_SEED", "0"); // else exiftool's choice among duplicate tags varies
    QProcess process;
    process.setWorkingDirectory(folder);
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(program, arguments);
    EXPECT_TRUE(process.waitForFinished(-1)) << program.toStdString();
    return process.readAllStandardOutput();
}

/// All that exiftool reads from each file of a folder, thumbnails and other pictures in full.
inline QMap<QString, Tags> readWithExiftool(const QString& folder) {
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

/// What exiv2 reads from a file: EXIF, IPTC and XMP unless `kinds` says otherwise. It derives EXIF and IPTC
/// from a sidecar's XMP. Each line of its output is "key  type  value"; a value may span several lines.
inline Tags readWithExiv2(const QString& folder, const QString& name, const QString& kinds = u"-PEIXkyv"_s) {
    static const QRegularExpression line(u"^((?:Exif|Iptc|Xmp)\\.\\S+)\\s+\\S+\\s*(.*)$"_s);
    Tags tags;
    QString key;
    int place = 0;
    for (const QByteArray& raw : output(u"exiv2"_s, {u"-q"_s, kinds, name}, folder).split('\n')) {
        const QString text = QString::fromUtf8(raw);
        const QRegularExpressionMatch match = line.match(text);
        if (match.hasMatch()) {
            key = match.captured(1);
            for (place = 0; tags.contains(key + QString::number(place));) {
                ++place;
            }
        }
        if (!key.isEmpty()) {
            tags[key + QString::number(place)] += match.hasMatch() ? match.captured(2) : text;
        }
    }
    return tags;
}

using IsOwnChange = std::function<bool(const QString& tag, const QString& before, const QString& after)>;

/// The tags that a write changed but must not change, one per line.
inline std::string differences(const Tags& before, const Tags& after, const IsOwnChange& isOwn) {
    QStringList different;
    for (const QString& tag : (before.keys() + after.keys())) {
        const bool isSame =
            before.value(tag) == after.value(tag) && before.contains(tag) == after.contains(tag);
        if (!isSame && !isOwn(tag, before.value(tag), after.value(tag))) {
            different.append(tag + u": "_s + before.value(tag).left(80) + u" -> "_s +
                             after.value(tag).left(80));
        }
    }
    different.removeDuplicates();
    return different.join(u'\n').toStdString();
}

/// The corpus files of one kind that took a caption, with their originals.
class WrittenCorpus : public testing::Test {
protected:
    explicit WrittenCorpus(const QString& kind) : files(corpusFiles(kind)) {}

    void SetUp() override {
        SKIP_WITHOUT_CORPUS(files);
        for (const QString& path : files) {
            const QString name = nameOf(path);
            const QString copy = after.filePath(name);
            ASSERT_TRUE(QFile::copy(path, copy));
            ASSERT_TRUE(QFile::setPermissions(copy, QFile::ReadOwner | QFile::WriteOwner));
            try {
                write(copy, caption);
                ASSERT_TRUE(QFile::copy(path, before.filePath(name)));
                names.append(name);
            } catch (const Error& error) {
                SCOPED_TRACE(path.toStdString());
                EXPECT_TRUE(contentsOf(copy) == contentsOf(path));
                expectRefusal(path, error);
                QFile::remove(copy);
            }
        }
    }
    virtual QString nameOf(const QString& path) const { return QFileInfo(path).fileName(); }
    virtual void write(const QString& path, const QString& text) const = 0;
    virtual void expectRefusal(const QString& path, const Error& error) = 0;

    /// Whatever caption was there before, a write results in the same bytes.
    void expectTheSameOfAnyWrite(const QString& path) const {
        const QByteArray once = contentsOf(path);
        write(path, caption);
        EXPECT_TRUE(contentsOf(path) == once) << "a second write of the same caption";
        write(path, u"Something else"_s);
        write(path, caption);
        EXPECT_TRUE(contentsOf(path) == once) << "a write after another caption";
    }

    const QString caption = u"Auburn's Zoë O'Neil <12> & \"R\" \U0001F3C8 漢字 scores during the 2nd half."_s;
    const QStringList files;
    QStringList names;
    QTemporaryDir before;
    QTemporaryDir after;
};

} // namespace ostrelle
