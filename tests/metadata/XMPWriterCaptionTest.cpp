// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/SidecarBytes.h"
#include "metadata/facts/XMPError.h"
#include "metadata/xml/XmlDocument.h"
#include "metadata/xml/XmlError.h"
#include "platform/FileError.h"
#include "support/FullDisk.h"

#include <QDir>
#include <QFileInfo>
#include <QStringEncoder>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QByteArray rdfDeclaration = "xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\"";
const QByteArray dcDeclaration = "xmlns:dc=\"http://purl.org/dc/elements/1.1/\"";

QByteArray newItem(const QByteArray& language, const QByteArray& text) {
    return "<rdf:li " + rdfDeclaration + " xml:lang=\"" + language + "\">" + text + "</rdf:li>";
}

QByteArray newAlt(const QByteArray& text) {
    return "<rdf:Alt " + rdfDeclaration + ">" + newItem("x-default", text) + newItem("en-US", text) +
           "</rdf:Alt>";
}

QByteArray newDescription(const QByteArray& text) {
    return "<dc:description " + dcDeclaration + ">" + newAlt(text) + "</dc:description>";
}

/// A caption as other tools write it.
QByteArray description(const QByteArray& items) {
    return "<dc:description><rdf:Alt>" + items + "</rdf:Alt></dc:description>";
}

QByteArray item(const QByteArray& language, const QByteArray& text) {
    return "<rdf:li xml:lang='" + language + "'>" + text + "</rdf:li>";
}

QByteArray bothItems(const QByteArray& text) {
    return item("x-default", text) + item("en-US", text);
}

QByteArray written(const QByteArray& sidecar, const QString& caption) {
    const SidecarFile file(sidecar);
    XMPWriter().writeDefaultCaption(caption, file.path());
    EXPECT_EQ(XMPWriter().readDefaultCaption(file.path()), caption);
    return file.bytes();
}

} // namespace

TEST(XMPWriterCaption, ChangesTheCaptionStructureAndNothingElse) {
    const struct {
        const char* what;
        QByteArray before;
        QByteArray after;
    } rows[] = {
        {"both items are there, the other languages keep their text",
         subject(description(bothItems("old") + item("de-DE", "alt"))),
         subject(description(bothItems("New") + item("de-DE", "alt")))},
        {"markup inside an item goes with the old text",
         subject(description(item("x-default", "o<!-- c --><b/>ld") + item("en-US", "<![CDATA[old]]>"))),
         subject(description(bothItems("New")))},
        {"a second item of one language is left alone",
         subject(description(bothItems("old") + item("x-default", "second"))),
         subject(description(bothItems("New") + item("x-default", "second")))},
        {"a missing item is appended", subject(description(item("x-default", "old") + "\n")),
         subject(description(item("x-default", "New") + "\n" + newItem("en-US", "New")))},
        {"empty tags are opened", subject("<dc:description><rdf:Alt /></dc:description>"),
         subject("<dc:description><rdf:Alt >" + newItem("x-default", "New") + newItem("en-US", "New") +
                 "</rdf:Alt></dc:description>")},
        {"an empty dc:description tag", subject("<dc:description/>"),
         subject("<dc:description>" + newAlt("New") + "</dc:description>")},
        {"plain text goes with the old caption", subject("<dc:description>plain</dc:description>"),
         subject("<dc:description>" + newAlt("New") + "</dc:description>")},
        {"comments, instructions, elements and indentation stay",
         subject("<dc:description>\n <!-- <c> -->o&amp;ld<?p i?> <![CDATA[<old>]]>\n<odd:x>y</odd:x>\n "
                 "<rdf:Alt>" +
                 bothItems("old") + "</rdf:Alt>&#10;</dc:description>"),
         subject("<dc:description>\n <!-- <c> --><?p i?><odd:x>y</odd:x>\n <rdf:Alt>" + bothItems("New") +
                 "</rdf:Alt></dc:description>")},
        {"a foreign list that is written as ours does not hide ours",
         subject("<dc:description><f:Alt xmlns:f='f'/> <rdf:Alt xmlns:rdf='f'>" + item("x-default", "old") +
                 "</rdf:Alt></dc:description>"),
         subject("<dc:description>" + newAlt("New") + "<f:Alt xmlns:f='f'/> <rdf:Alt xmlns:rdf='f'>" +
                 item("x-default", "old") + "</rdf:Alt></dc:description>")},
        {"of two lists the first stays",
         subject("<dc:description><rdf:Alt>" + bothItems("old") + "</rdf:Alt> <rdf:Alt>" +
                 item("fr-FR", "x") + "</rdf:Alt></dc:description>"),
         subject("<dc:description><rdf:Alt>" + bothItems("New") + "</rdf:Alt> </dc:description>")},
        {"no caption: a new one ahead of all other fields", subject("\n  <odd:field a = '1'/>\n"),
         subject(newDescription("New") + "\n  <odd:field a = '1'/>\n")},
        {"an attribute of the name is another matter", subject("", " dc:description='attribute'"),
         subject(newDescription("New"), " dc:description='attribute'")},
        {"captions in other blocks go, their other fields stay",
         packet("<rdf:Description rdf:about='' odd:a='1'><odd:b/>" + description(bothItems("one")) +
                "</rdf:Description><rdf:Description rdf:about=''>" + description(bothItems("two")) +
                "<odd:c>&#65;</odd:c></rdf:Description>"),
         packet("<rdf:Description rdf:about='' odd:a='1'><odd:b/>" + description(bothItems("New")) +
                "</rdf:Description><rdf:Description rdf:about=''><odd:c>&#65;</odd:c></rdf:Description>")},
        {"the block with the empty about wins over an earlier one",
         packet("<rdf:Description rdf:about='uuid:1'>" + description(bothItems("one")) +
                "</rdf:Description><rdf:Description rdf:about=''/>"),
         packet("<rdf:Description rdf:about='uuid:1'></rdf:Description><rdf:Description rdf:about=''>" +
                newDescription("New") + "</rdf:Description>")},
        {"with none, the first is made the subject",
         packet("<rdf:Description rdf:about = 'uuid:1' odd:a=\"2\">" + description(bothItems("old")) +
                "</rdf:Description>"),
         packet("<rdf:Description rdf:about = '' odd:a=\"2\">" + description(bothItems("New")) +
                "</rdf:Description>")},
        {"an about is added where there is none",
         packet("<rdf:Description>" + description(bothItems("old")) + "</rdf:Description>"),
         packet("<rdf:Description rdf:about=\"\">" + description(bothItems("New")) + "</rdf:Description>")},
        {"an about without its prefix is the same attribute", packet("<rdf:Description about='uuid:1'/>"),
         packet("<rdf:Description about=''>" + newDescription("New") + "</rdf:Description>")},
        {"no rdf:Description", packet("<!-- empty -->"),
         packet("<!-- empty --><rdf:Description " + rdfDeclaration + " " + dcDeclaration +
                " rdf:about=\"\">" + newDescription("New") + "</rdf:Description>")},
        {"no rdf:RDF", "<x:xmpmeta xmlns:x='adobe:ns:meta/'/>",
         "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF " + rdfDeclaration + "><rdf:Description " +
             rdfDeclaration + " " + dcDeclaration + " rdf:about=\"\">" + newDescription("New") +
             "</rdf:Description></rdf:RDF></x:xmpmeta>"},
        {"a second rdf:RDF beside the first goes",
         "<x:m xmlns:x='x'><rdf:RDF " + rdfDeclaration +
             "><rdf:Description rdf:about=''/></rdf:RDF> <rdf:RDF " + rdfDeclaration +
             "><rdf:Description rdf:about=''/></rdf:RDF>\n</x:m>",
         "<x:m xmlns:x='x'><rdf:RDF " + rdfDeclaration + "><rdf:Description rdf:about='' " + dcDeclaration +
             ">" + newDescription("New") + "</rdf:Description></rdf:RDF> \n</x:m>"},
        {"prefixes of another choice",
         "<r:RDF xmlns:r=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\"><r:Description "
         "r:about=\"uuid:1\"><d:description "
         "xmlns:d='http://purl.org/dc/elements/1.1/'><r:Alt><r:li xml:lang=\"x-default\">old</r:li><r:li "
         "xml:lang=\"en-US\"/></r:Alt></d:description></r:Description></r:RDF>",
         "<r:RDF xmlns:r=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\"><r:Description r:about=\"\" " +
             dcDeclaration + " " + rdfDeclaration +
             "><d:description xmlns:d='http://purl.org/dc/elements/1.1/'><r:Alt><r:li "
             "xml:lang=\"x-default\">New</r:li><r:li xml:lang=\"en-US\">New</r:li></r:Alt></d:description>"
             "</r:Description></r:RDF>"},
        {"a caption of another namespace is no caption",
         subject("<odd:description>x</odd:description>" + description(bothItems("old"))),
         subject("<odd:description>x</odd:description>" + description(bothItems("New")))},
        {"byte-order mark, declaration, entities, line ends and padding stay",
         "\xEF\xBB\xBF<?xml  version='1.0' encoding='utf-8' standalone = 'yes' ?>\r\n<?xpacket "
         "begin='\xEF\xBB\xBF'?>" +
             subject("\r\n\t<odd:f b='&quot;&#x41;'  a = \"2\">&amp;&gt;</odd:f >" +
                     description(bothItems("old"))) +
             "  \r\n   \n<?xpacket end='w'?>\n\n",
         "\xEF\xBB\xBF<?xml  version='1.0' encoding='utf-8' standalone = 'no' ?>\r\n<?xpacket "
         "begin='\xEF\xBB\xBF'?>" +
             subject("\r\n\t<odd:f b='&quot;&#x41;'  a = \"2\">&amp;&gt;</odd:f >" +
                     description(bothItems("New"))) +
             "  \r\n   \n<?xpacket end='w'?>\n\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(written(row.before, u"New"_s), row.after);
        EXPECT_EQ(written(row.after, u"New"_s), row.after);
    }
}

TEST(XMPWriterCaption, TheTemplateKeepsItsLayout) {
    const SidecarFile file("");
    const XMPWriter xmp;
    xmp.createEmptySidecar(file.path());
    const QByteArray empty = file.bytes();
    EXPECT_EQ(empty.size(), 498);
    EXPECT_EQ(xmp.readDefaultCaption(file.path()), u""_s);
    xmp.writeDefaultCaption(u"New"_s, file.path());
    QByteArray expected = empty;
    expected.replace("\"x-default\"></rdf:li>\n            </rdf:Alt>",
                     "\"x-default\">New</rdf:li>\n            " + newItem("en-US", "New") + "</rdf:Alt>");
    EXPECT_EQ(file.bytes(), expected);
}

TEST(XMPWriterCaption, EveryCaptionComesBackAsItWas) {
    for (const QString& caption :
         {u""_s, u" "_s, u"R&D <b>\"5 > 3\"</b> 'it' ]]> &amp; &#65; %1 \\n"_s,
          u"line\nline\r\nline\rend\t."_s, u"\U0001F3C8 Zoë \u65E5\u672C e\u0301 \u2028 \u0085"_s,
          QString(300'000, u'x')}) {
        for (const QByteArray& sidecar :
             {subject(description(bothItems("old"))), subject(""),
              QByteArray("<?xml version='1.0' encoding='ISO-8859-1'?>") + subject("<odd:x>\xE9</odd:x>"),
              QByteArray("<?xml version='1.0' encoding='US-ASCII'?>") + subject("")}) {
            written(sidecar, caption);
        }
    }
}

TEST(XMPWriterCaption, LeavesOutWhatXmlCannotHold) {
    const SidecarFile file(subject(""));
    XMPWriter().writeDefaultCaption(u"a\u0001b\u000Bc\uFFFEd"_s + QChar(0xD800) + u"e"_s, file.path());
    EXPECT_EQ(XMPWriter().readDefaultCaption(file.path()), u"abcde"_s);
}

TEST(XMPWriterCaption, Utf16StaysUtf16) {
    const QString text = QString::fromUtf8(
        "<?xml version='1.0' encoding='UTF-16' standalone='yes'?>" +
        subject("<odd:x>Zo\xC3\xAB</odd:x>" +
                description(bothItems("old")).replace("<rdf:Alt>", "plain<!-- c --><rdf:Alt>")));
    QString expected = text;
    expected.remove(u"plain"_s)
        .replace(u"old"_s, u"\U0001F3C8 & Zoë"_s.replace(u"&"_s, u"&amp;"_s))
        .replace(u"'yes'"_s, u"'no'"_s);
    for (const auto encoding : {QStringConverter::Utf16LE, QStringConverter::Utf16BE}) {
        QStringEncoder encode(encoding, QStringConverter::Flag::WriteBom);
        QStringEncoder encodeExpected(encoding, QStringConverter::Flag::WriteBom);
        EXPECT_EQ(written(encode(text), u"\U0001F3C8 & Zoë"_s), QByteArray(encodeExpected(expected)));
    }
}

TEST(XMPWriterCaption, RefusesHostileInputAndLeavesItUntouched) {
    const QByteArray head = "<?xml version='1.0'?>";
    QByteArray manyElements = "<a>";
    for (int count = 0; count < 1'000'001; ++count) {
        manyElements += "<b/>";
    }
    const struct {
        const char* what;
        QByteArray bytes;
        QString words;
    } rows[] = {
        {"nesting", QByteArray("<a>").repeated(100'000) + QByteArray("</a>").repeated(100'000), u"nested"_s},
        {"elements", manyElements + "</a>", u"million"_s},
        {"entity bomb", head + "<!DOCTYPE a [<!ENTITY b 'b'><!ENTITY c '&b;&b;&b;&b;'>]><a>&c;</a>",
         u"document type"_s},
        {"external entity", head + "<!DOCTYPE a [<!ENTITY x SYSTEM 'file:///etc/passwd'>]><a>&x;</a>",
         u"document type"_s},
        {"external subset", head + "<!DOCTYPE a SYSTEM 'http://example.com/a.dtd'><a/>", u"document type"_s},
        {"NUL bytes", subject("") + QByteArray(10, '\0'), u"not well formed"_s},
        {"NUL inside", "<a>" + QByteArray(1, '\0') + "</a>", u"not well formed"_s},
        {"cut in a tag", subject("").chopped(5), u"not well formed"_s},
        {"cut between tags", subject("").chopped(12), u"ends inside an element"_s},
        {"cut in the padding's end", subject("") + "\n<?xpacket end='w'", u"not well formed"_s},
        {"half a character", QByteArray("\xFF\xFE<\0a\0 \0b\0=\0\"\0\0\xD8\"\0/\0>\0", 22),
         u"half a character"_s},
        {"two roots", subject("") + subject(""), u"not well formed"_s},
        {"unbound prefix", "<a:b/>", u"not well formed"_s},
        {"invalid UTF-8", "<a>\xFF\xFE</a>", u"not well formed"_s},
        {"unknown encoding", "<?xml version='1.0' encoding='windows-1252'?><a/>", u"windows-1252"_s},
        {"contradiction", "\xEF\xBB\xBF<?xml version='1.0' encoding='ISO-8859-1'?><a/>",
         u"byte-order mark"_s},
        {"UTF-16 cut in a character", QByteArray("\xFF\xFE<\0a\0/\0>", 9), u"not well formed"_s},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const SidecarFile file(row.bytes);
        try {
            XMPWriter().writeDefaultCaption(u"New"_s, file.path());
            ADD_FAILURE() << "was accepted";
        } catch (const XmlError& error) {
            EXPECT_TRUE(error.localizedDescription().contains(row.words, Qt::CaseInsensitive))
                << error.what();
        }
        EXPECT_EQ(file.bytes(), row.bytes);
    }
}

TEST(XMPWriterCaption, ReadsFiftyMegabytesOfTextAndRefusesMoreThanItsLimit) {
    const SidecarFile large(subject("<odd:x>" + QByteArray(50'000'000, 'x') + "</odd:x>"));
    XMPWriter().writeDefaultCaption(u"New"_s, large.path());
    EXPECT_EQ(XMPWriter().readDefaultCaption(large.path()), u"New"_s);
    const SidecarFile tooLarge(subject("<odd:x>" + QByteArray(XmlDocument::maximumSize, 'x') + "</odd:x>"));
    EXPECT_THROW(XMPWriter().readDefaultCaption(tooLarge.path()), FileError);
}

TEST(XMPWriterCaption, ManySurplusPacketsTakeNoLongerThanTheirNumber) {
    const SidecarFile file("<x>" + QByteArray("<b/>").repeated(200'000) +
                           QByteArray("<RDF/>").repeated(200'000) + "</x>");
    XMPWriter().writeDefaultCaption(u"New"_s, file.path()); // a second or two; minutes if each looked at all
    EXPECT_EQ(file.bytes().count("RDF"), 2);
}

TEST(XMPWriterCaption, IsRefusedWhereItWouldNotBeRead) {
    const QByteArray kept =
        description(bothItems("old")).replace("<dc:description", "<dc:description pm-keep='1'");
    const QByteArray rows[] = {
        // The only place for the caption is inside a caption that has to go.
        "<dc:description " + dcDeclaration + ">" + subject("<odd:a/>") + "</dc:description>",
        // Another tool's caption is to be kept and stands in front.
        packet("<rdf:Description rdf:about='uuid:1'>" + kept +
               "</rdf:Description><rdf:Description rdf:about=''/>"),
        // A foreign list that is written as ours stands in front of ours.
        subject("<dc:description xmlns:r=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\" "
                "xmlns:rdf='f'><rdf:Alt>" +
                item("x-default", "old") + "</rdf:Alt><r:Alt/></dc:description>"),
    };
    for (const QByteArray& sidecar : rows) {
        SCOPED_TRACE(sidecar.constData());
        const SidecarFile file(sidecar);
        EXPECT_THROW(XMPWriter().writeDefaultCaption(u"New"_s, file.path()), XMPError);
        EXPECT_EQ(file.bytes(), sidecar);
    }
}

TEST(XMPWriterCaption, AFullDiskLeavesTheOldFile) {
    const QByteArray sidecar = subject(description(bothItems("old")) + QByteArray("<odd:x/>").repeated(1000));
    const SidecarFile file(sidecar);
    {
        const FullDisk full(4096);
        EXPECT_THROW(XMPWriter().writeDefaultCaption(u"New"_s, file.path()), FileError);
    }
    EXPECT_EQ(file.bytes(), sidecar);
    EXPECT_EQ(QDir(QFileInfo(file.path()).path()).entryList(QDir::Files | QDir::Hidden),
              QStringList(u"IMG_0001.xmp"_s));
}

} // namespace ostrelle
