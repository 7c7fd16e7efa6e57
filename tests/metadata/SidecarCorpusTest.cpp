// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/SidecarBytes.h"
#include "metadata/xml/XmlDocument.h"
#include "metadata/xml/XmlError.h"
#include "metadata/xml/XmpNamespaces.h"
#include "metadata/xml/XmpQueries.h"
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
#include <algorithm>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString caption = u"Auburn's Zoë O'Neil <12> & \"R\" \U0001F3C8 scores during the 2nd half."_s;

/// The block that a write works on.
XmlElement subjectOf(const XmlDocument& document) {
    const XmlElement rdf = document.findFirst("RDF");
    const XmlElement subject = describedSubject(document);
    return subject || !rdf ? subject : rdf.child("Description");
}

/// The list of the caption in its languages, where there is one caption, in that block, in one list.
XmlElement captionList(const XmlDocument& document) {
    const QList<XmlElement> captions = document.find("description", xmp::dc);
    const bool isInPlace = captions.size() == 1 && captions.first().parent() == subjectOf(document);
    const QList<XmlElement> lists =
        isInPlace ? captions.first().children("Alt", xmp::rdf) : QList<XmlElement>();
    return lists.size() == 1 ? lists.first() : XmlElement();
}

/// The places that are a write's to change: rdf:about of the subject, and the two items of the caption's list
/// or, where there was no such list before, the caption elements whole.
QList<XmlSpan> ownSpans(const XmlDocument& document, bool hadList) {
    QList<XmlSpan> spans;
    const XmlElement subject = subjectOf(document);
    for (const XmlAttribute& attribute : subject ? subject.attributes() : QList<XmlAttribute>()) {
        if (attribute.hasLocalName(u"about")) {
            spans.append(attribute.valueSpan());
        }
    }
    for (const XmlElement& item : hadList ? captionList(document).children("li") : QList<XmlElement>()) {
        const std::optional<QString> language = item.attribute(u"xml:lang");
        if (language == u"x-default" || language == u"en-US") {
            spans.append(item.span());
        }
    }
    for (const XmlElement& element : hadList ? QList<XmlElement>() : document.find("description", xmp::dc)) {
        spans.append(element.span());
    }
    std::ranges::sort(spans, {}, &XmlSpan::begin);
    return spans;
}

/// The text that is not a write's to change. So that what a file lacked is no difference, empty tags are
/// opened and the namespaces, abouts and blocks that a write may add are taken out, from both sides alike.
QString foreignText(const QByteArray& bytes, bool hadList) {
    const XmlDocument document = XmlDocument::parse(bytes);
    QByteArray kept;
    qsizetype done = 0;
    for (const XmlSpan& span : ownSpans(document, hadList)) {
        if (span.begin >= done) {
            kept += bytes.sliced(done, span.begin - done);
            done = span.end;
        }
    }
    QString text = decodeXml(kept + bytes.sliced(done), document.encoding());
    text.replace(QRegularExpression(u"^(<\\?xml [^>]*standalone=['\"])yes"_s), u"\\1no"_s);
    text.replace(QRegularExpression(u"<([^\\s<>/?!]+)((?:\\s[^<>]*)?)/>"_s), u"<\\1\\2></\\1>"_s);
    text.remove(QRegularExpression(u" (xmlns:(dc|rdf)=\"[^\"]*\"|rdf:about=\"\")"_s));
    text.remove(u"<rdf:Description></rdf:Description>"_s);
    text.remove(u"<rdf:RDF></rdf:RDF>"_s);
    return text;
}

bool isWellFormed(const QByteArray& bytes) {
    try {
        return bool(XmlDocument::parse(bytes).root());
    } catch (const XmlError&) {
        return false;
    }
}

/// What another tool reads in one sidecar.
struct Reading {
    QString caption;
    QJsonObject otherTags;
};
using Readings = QMap<QString, Reading>; // by file name

std::string asText(const QJsonObject& tags) {
    return QJsonDocument(tags).toJson().toStdString();
}

QByteArray output(const QString& program, const QStringList& arguments, const QString& folder) {
    QProcess process;
    process.setWorkingDirectory(folder);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"PERL_HASH_SEED"_s, u"0"_s); // or exiftool's choice among doubled tags varies
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    EXPECT_TRUE(process.waitForFinished(120'000)) << program.toStdString();
    return process.readAllStandardOutput();
}

Readings readWithExiftool(const QString& folder) {
    const QByteArray json = output(
        u"exiftool"_s, {u"-q"_s, u"-j"_s, u"-a"_s, u"-G4:1"_s, u"-struct"_s, u"-XMP:all"_s, u"."_s}, folder);
    Readings readings;
    for (const QJsonValue& entry : QJsonDocument::fromJson(json).array()) {
        Reading reading{.caption = {}, .otherTags = entry.toObject()};
        const QString name = QFileInfo(reading.otherTags.take(u"SourceFile"_s).toString()).fileName();
        for (const QString& key : reading.otherTags.keys()) {
            if (key.contains("XMP-dc:Description"_L1)) {
                const QString value = reading.otherTags.take(key).toString();
                reading.caption = key == u"XMP-dc:Description"_s ? value : reading.caption;
            } else if (key.endsWith("XMP-rdf:About"_L1)) {
                reading.otherTags.remove(key);
            }
        }
        readings.insert(name, reading);
    }
    return readings;
}

/// Each line of its output is "file  key  value", and a value may run over several lines.
Readings readWithExiv2(const QString& folder) {
    const QStringList files = QDir(folder).entryList(QDir::Files, QDir::Name);
    static const QRegularExpression line(u"^(\\S+\\.xmp)\\s+(Xmp\\.\\S+)\\s*(.*)$"_s);
    Readings readings;
    QString name;
    QString key;
    for (const QByteArray& raw : output(u"exiv2"_s, QStringList(u"-PXkv"_s) + files, folder).split('\n')) {
        const QString text = QString::fromUtf8(raw);
        const QRegularExpressionMatch match = line.match(text);
        name = match.hasMatch() ? match.captured(1) : name;
        key = match.hasMatch() ? match.captured(2) : key;
        const QString value = match.hasMatch() ? match.captured(3) : text;
        if (key.startsWith("Xmp.dc.description"_L1)) {
            readings[name].caption += value;
        } else if (!name.isEmpty() && key != u"Xmp.xmpMM.InstanceID"_s) { // made up from rdf:about by exiv2
            readings[name].otherTags[key] = readings[name].otherTags[key].toString() + value;
        }
    }
    return readings;
}

/// Files that exiftool does not read as XMP, with or without our caption: no RDF by its namespace, a comment
/// in front of the packet, characters outside the basic plane in UTF-16.
const QStringList beyondExiftool = {
    u"embedded__exiftool__ExifTool.xmp.xmp"_s,
    u"exiv2__issue_1901_poc2.xmp.xmp"_s,
    u"exiv2__issue_1901_poc3.xmp.xmp"_s,
    u"exiv2__issue_1954_poc.xmp.xmp"_s,
    u"exiv2__xmpsdk.xmp.xmp"_s,
    u"pdfbox__history2.rdf.xmp"_s,
    u"pdfbox__override_ns.rdf.xmp"_s,
};

/// A file in which exiv2 sees a difference of its own making: it shows a title in the form of another schema
/// differently once the packet declares the usual prefix.
const QStringList differentForExiv2 = {u"exiftool__XMP3.xmp.xmp"_s};

} // namespace

TEST(SidecarCorpus, AWriteKeepsEveryForeignByteAndIsTheSameWhateverCameBefore) {
    const QStringList files = corpusFiles(u"sidecars"_s);
    SKIP_WITHOUT_CORPUS(files);
    const XMPWriter xmp;
    int written = 0;
    for (const QString& path : files) {
        SCOPED_TRACE(path.toStdString());
        const QByteArray original = readFile(path, XmlDocument::maximumSize);
        SidecarFile file(original);
        if (!isWellFormed(original)) {
            EXPECT_ANY_THROW(xmp.writeDefaultCaption(caption, file.path()));
            EXPECT_EQ(file.bytes(), original);
            continue;
        }
        xmp.writeDefaultCaption(caption, file.path());
        const QByteArray direct = file.bytes();
        EXPECT_EQ(xmp.readDefaultCaption(file.path()), caption);
        const bool hadList = bool(captionList(XmlDocument::parse(original)));
        EXPECT_EQ(foreignText(original, hadList).toStdString(), foreignText(direct, hadList).toStdString());
        xmp.writeDefaultCaption(caption, file.path());
        EXPECT_EQ(file.bytes(), direct) << "a second write of the same caption";
        file.write(original);
        xmp.writeDefaultCaption(u"Something else"_s, file.path());
        xmp.writeDefaultCaption(caption, file.path());
        EXPECT_EQ(file.bytes(), direct) << "a write after another caption";
        ++written;
    }
    std::printf("%d of %d sidecars written\n", written, static_cast<int>(files.size()));
    EXPECT_GT(written, files.size() * 8 / 10);
}

TEST(SidecarCorpus, ReadsNeverFailInAnyOtherWayThanWithAnError) {
    const QStringList files =
        corpusFiles(u"sidecars"_s) + corpusFiles(u"jpeg"_s) + corpusFiles(u"listings"_s);
    SKIP_WITHOUT_CORPUS(files);
    const XMPWriter xmp;
    RecordingLog log;
    for (const QString& path : files) {
        try {
            xmp.readDefaultCaption(path);
            xmp.readContext(path, QTimeZone::utc());
            xmp.readRights(path, log);
            xmp.readCreator(path);
        } catch (const Error&) {
            EXPECT_ANY_THROW(xmp.readCreator(path));
        }
    }
}

TEST(SidecarCorpus, OtherToolsReadTheCaptionAndAllElseAsBefore) {
    const QStringList files = corpusFiles(u"sidecars"_s);
    SKIP_WITHOUT_CORPUS(files);
    QTemporaryDir before;
    QTemporaryDir after;
    for (const QString& path : files) {
        const QByteArray original = readFile(path, XmlDocument::maximumSize);
        if (!isWellFormed(original)) {
            continue;
        }
        const QString name = QFileInfo(path).fileName() + u".xmp"_s; // one kind of file for the tools
        ASSERT_TRUE(QFile::copy(path, before.filePath(name)));
        ASSERT_TRUE(QFile::copy(path, after.filePath(name)));
        ASSERT_TRUE(QFile::setPermissions(after.filePath(name), QFile::ReadOwner | QFile::WriteOwner));
        XMPWriter().writeDefaultCaption(caption, after.filePath(name));
    }
    const Readings exiftoolBefore = readWithExiftool(before.path());
    const Readings exiftoolAfter = readWithExiftool(after.path());
    ASSERT_GT(exiftoolAfter.size(), 150);
    for (auto reading = exiftoolAfter.begin(); reading != exiftoolAfter.end(); ++reading) {
        if (!beyondExiftool.contains(reading.key())) {
            EXPECT_EQ(reading->caption.toStdString(), caption.toStdString()) << reading.key().toStdString();
            EXPECT_EQ(asText(reading->otherTags), asText(exiftoolBefore[reading.key()].otherTags))
                << reading.key().toStdString();
        }
    }
    const Readings exiv2Before = readWithExiv2(before.path());
    const Readings exiv2After = readWithExiv2(after.path());
    ASSERT_GT(exiv2Before.size(), 100);
    for (auto reading = exiv2Before.begin(); reading != exiv2Before.end(); ++reading) {
        if (differentForExiv2.contains(reading.key())) {
            continue;
        }
        const Reading& now = exiv2After[reading.key()];
        EXPECT_TRUE(now.caption.contains(u"lang=\"x-default\" "_s + caption)) << reading.key().toStdString();
        EXPECT_EQ(asText(now.otherTags), asText(reading->otherTags)) << reading.key().toStdString();
    }
}

} // namespace ostrelle
