// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/CorpusTools.h"
#include "metadata/SidecarBytes.h"
#include "metadata/xml/XmlDocument.h"
#include "metadata/xml/XmlError.h"
#include "metadata/xml/XmpNamespaces.h"
#include "metadata/xml/XmpQueries.h"

#include <algorithm>

namespace ostrelle {

namespace {

/// The block that a write edits.
XmlElement subjectOf(const XmlDocument& document) {
    const XmlElement rdf = document.findFirst("RDF");
    const XmlElement subject = describedSubject(document);
    return subject || !rdf ? subject : rdf.child("Description");
}

/// The caption's list of languages, if there is one caption, in that block, with one list.
XmlElement captionList(const XmlDocument& document) {
    const QList<XmlElement> captions = document.find("description", xmp::dc);
    const bool isInPlace = captions.size() == 1 && captions.first().parent() == subjectOf(document);
    const QList<XmlElement> lists =
        isInPlace ? captions.first().children("Alt", xmp::rdf) : QList<XmlElement>();
    return lists.size() == 1 ? lists.first() : XmlElement();
}

/// The places that a write may change: rdf:about of the subject, and the two items of the caption's list, or
/// the whole caption elements if there was no such list before.
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

/// The text that a write must not change. To allow for its additions, empty tags are opened, and the
/// namespaces, abouts and blocks that it may add are removed, before and after the write alike.
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

/// Files that exiftool does not read as XMP, with or without our caption: they lack RDF's namespace, start
/// with a comment, or hold characters outside the basic plane in UTF-16.
const QStringList beyondExiftool = {
    u"embedded__exiftool__ExifTool.xmp.xmp"_s,
    u"exiv2__issue_1901_poc2.xmp.xmp"_s,
    u"exiv2__issue_1901_poc3.xmp.xmp"_s,
    u"exiv2__issue_1954_poc.xmp.xmp"_s,
    u"exiv2__xmpsdk.xmp.xmp"_s,
    u"pdfbox__history2.rdf.xmp"_s,
    u"pdfbox__override_ns.rdf.xmp"_s,
};

/// A file that exiv2 reads differently on its own account: it shows a title in the form of another schema
/// differently once the packet declares the usual prefix.
const QStringList differentForExiv2 = {u"exiftool__XMP3.xmp.xmp"_s};

/// What a write may change in another tool's reading: the caption, and rdf:about, which exiv2 also shows as
/// the instance.
bool isOwnChange(const QString& tag, const QString& /*before*/, const QString& /*after*/) {
    static const QRegularExpression own(
        u"^(System:|ExifTool:|SourceFile|XMP-dc(:Copy[0-9]+)?:Description|XMP-rdf(:Copy[0-9]+)?:About$"
        u"|Xmp.dc.description|Xmp.xmpMM.InstanceID)"_s);
    return own.match(tag).hasMatch();
}

class SidecarCorpus : public WrittenCorpus {
protected:
    SidecarCorpus() : WrittenCorpus(u"sidecars"_s) {}

    QString nameOf(const QString& path) const override { // the tools see one kind of file
        return WrittenCorpus::nameOf(path) + u".xmp"_s;
    }
    void write(const QString& path, const QString& text) const override {
        XMPWriter().writeDefaultCaption(text, path);
    }
    void expectRefusal(const QString& path, const Error& /*error*/) override {
        EXPECT_FALSE(isWellFormed(contentsOf(path)));
    }
};

} // namespace

TEST_F(SidecarCorpus, AWriteKeepsEveryForeignByteAndIsTheSameWhateverCameBefore) {
    for (const QString& name : names) {
        SCOPED_TRACE(name.toStdString());
        const QString path = after.filePath(name);
        const QByteArray original = contentsOf(before.filePath(name));
        const QByteArray written = contentsOf(path);
        EXPECT_EQ(XMPWriter().readSidecar(path, QTimeZone::utc()).facts.caption, caption);
        const bool hadList = bool(captionList(XmlDocument::parse(original)));
        EXPECT_EQ(foreignText(original, hadList).toStdString(), foreignText(written, hadList).toStdString());
        expectTheSameOfAnyWrite(path);
        writeFile(path, original);
        write(path, u"Something else"_s);
        write(path, caption);
        EXPECT_EQ(contentsOf(path), written) << "a write after another first caption";
    }
    std::printf("%lld of %lld sidecars written\n", names.size(), files.size());
    EXPECT_GT(names.size(), files.size() * 8 / 10);
}

TEST_F(SidecarCorpus, OtherToolsReadTheCaptionAndAllElseAsBefore) {
    const QMap<QString, Tags> old = readWithExiftool(before.path());
    const QMap<QString, Tags> written = readWithExiftool(after.path());
    ASSERT_GT(written.size(), 150);
    int readByExiv2 = 0;
    for (const QString& name : names) {
        SCOPED_TRACE(name.toStdString());
        if (!beyondExiftool.contains(name)) {
            EXPECT_EQ(written[name][u"XMP-dc:Description"_s], caption);
            EXPECT_EQ(differences(old[name], written[name], isOwnChange), "");
        }
        const Tags exiv2Old = readWithExiv2(before.path(), name, u"-PXkyv"_s);
        const Tags exiv2Written = readWithExiv2(after.path(), name, u"-PXkyv"_s);
        if (!exiv2Old.isEmpty() && !differentForExiv2.contains(name)) {
            EXPECT_TRUE(exiv2Written[u"Xmp.dc.description0"_s].contains(u"lang=\"x-default\" "_s + caption));
            EXPECT_EQ(differences(exiv2Old, exiv2Written, isOwnChange), "");
            ++readByExiv2;
        }
    }
    EXPECT_GT(readByExiv2, 100);
}

TEST(MetadataCorpus, ReadsNeverFailInAnyOtherWayThanWithAnError) {
    const QStringList files = corpusFiles(u"sidecars"_s) + corpusFiles(u"jpeg"_s) + corpusFiles(u"raw"_s) +
                              corpusFiles(u"listings"_s);
    SKIP_WITHOUT_CORPUS(files);
    for (const QString& path : files) {
        EXPECT_NO_THROW(XMPWriter().readEmbedded(path, QTimeZone::utc())) << path.toStdString();
        try {
            XMPWriter().readSidecar(path, QTimeZone::utc());
        } catch (const Error&) {
        }
    }
}

} // namespace ostrelle
