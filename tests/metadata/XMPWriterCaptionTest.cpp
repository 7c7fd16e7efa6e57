// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/SidecarBytes.h"
#include "metadata/facts/XMPError.h"
#include "metadata/sidecar/SidecarCaptionEdit.h"
#include "metadata/xml/XmlDocument.h"
#include "metadata/xml/XmlError.h"
#include "metadata/xml/XmpQueries.h"
#include "platform/FileError.h"
#include "support/Failure.h"

#include <QStringEncoder>
#include <ctime>
#include <functional>

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

QByteArray bothItems(const QByteArray& text) {
    return item("x-default", text) + item("en-US", text);
}

QByteArray written(const QByteArray& sidecar, const QString& caption) {
    const SidecarFile file(sidecar);
    XMPWriter().writeDefaultCaption(caption, file.path());
    EXPECT_EQ(XMPWriter().readSidecar(file.path(), QTimeZone::utc()).facts.caption, caption);
    return file.bytes();
}

/// The message of a refused write into the sidecar, which must stay as it was.
template <typename Refusal>
QString refusal(const QByteArray& sidecar) {
    const SidecarFile file(sidecar);
    const auto write = [&file] { XMPWriter().writeDefaultCaption(u"New"_s, file.path()); };
    QString words = failureIn<Refusal>(write).localizedDescription();
    EXPECT_EQ(file.bytes(), sidecar);
    return words;
}

QByteArray attributesOfNamespaces(int count) {
    QByteArray attributes;
    for (int number = 0; number < count; ++number) {
        const QByteArray prefix = "p" + QByteArray::number(number);
        attributes += " xmlns:" + prefix + "='" + prefix + "' " + prefix + ":about='x'";
    }
    return attributes;
}

/// The processor time of reading and writing a caption, in seconds.
double cost(const QByteArray& sidecar) {
    const std::clock_t begin = std::clock();
    const XmlDocument document = XmlDocument::parse(sidecar);
    EXPECT_EQ(defaultCaption(document), std::nullopt);
    const QByteArray edited = withCaption(document, u"New"_s);
    EXPECT_EQ(defaultCaption(XmlDocument::parse(edited)), u"New"_s);
    return static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
}

} // namespace

TEST(XMPWriterCaption, ChangesTheCaptionStructureAndNothingElse) {
    const QByteArray old = described(bothItems("old"));
    const QByteArray now = described(bothItems("New"));
    const auto block = [](const QByteArray& attributes, const QByteArray& fields) {
        return "<rdf:Description" + attributes + ">" + fields + "</rdf:Description>";
    };
    const auto rdf = [](const QByteArray& blocks) {
        return "<rdf:RDF " + rdfDeclaration + ">" + blocks + "</rdf:RDF>";
    };
    const QByteArray newBlock =
        block(" " + rdfDeclaration + " " + dcDeclaration + " rdf:about=\"\"", newDescription("New"));
    const struct {
        const char* what;
        QByteArray file; ///< around the part that changes
        QByteArray before;
        QByteArray after;
    } rows[] = {
        {"both items are there, the other languages keep their text",
         subject(described("%" + item("de-DE", "alt"))), bothItems("old"), bothItems("New")},
        {"markup inside an item goes with the old text", subject(described("%")),
         item("x-default", "o<!-- c --><b/>ld") + item("en-US", "<![CDATA[old]]>"), bothItems("New")},
        {"a second item of one language is left alone", subject(described("%" + item("x-default", "second"))),
         bothItems("old"), bothItems("New")},
        {"a missing item is appended", subject(described("%")), item("x-default", "old") + "\n",
         item("x-default", "New") + "\n" + newItem("en-US", "New")},
        {"empty tags are opened", subject("<dc:description>%</dc:description>"), "<rdf:Alt />",
         "<rdf:Alt >" + newItem("x-default", "New") + newItem("en-US", "New") + "</rdf:Alt>"},
        {"an empty dc:description tag", subject("%"), "<dc:description/>",
         "<dc:description>" + newAlt("New") + "</dc:description>"},
        {"plain text goes with the old caption", subject("<dc:description>%</dc:description>"), "plain",
         newAlt("New")},
        {"comments, instructions, elements and indentation stay",
         subject("<dc:description>\n <!-- <c> -->%</dc:description>"),
         "o&amp;ld<?p i?> <![CDATA[<old>]]>\n<odd:x>y</odd:x>\n <rdf:Alt>" + bothItems("old") +
             "</rdf:Alt>&#10;",
         "<?p i?><odd:x>y</odd:x>\n <rdf:Alt>" + bothItems("New") + "</rdf:Alt>"},
        {"a foreign list that is written as ours does not hide ours",
         subject("<dc:description>%<f:Alt xmlns:f='f'/> <rdf:Alt xmlns:rdf='f'>" + item("x-default", "old") +
                 "</rdf:Alt></dc:description>"),
         "", newAlt("New")},
        {"of two lists the first stays", subject("<dc:description>%</dc:description>"),
         "<rdf:Alt>" + bothItems("old") + "</rdf:Alt> <rdf:Alt>" + item("fr-FR", "x") + "</rdf:Alt>",
         "<rdf:Alt>" + bothItems("New") + "</rdf:Alt> "},
        {"no caption: a new one ahead of all other fields", subject("%\n  <odd:field a = '1'/>\n"), "",
         newDescription("New")},
        {"an attribute of the name is another matter", subject("%", " dc:description='attribute'"), "",
         newDescription("New")},
        {"captions in other blocks go, their other fields stay", packet("%"),
         block(" rdf:about='' odd:a='1'", "<odd:b/>" + old) +
             block(" rdf:about=''", described(bothItems("two")) + "<odd:c>&#65;</odd:c>"),
         block(" rdf:about='' odd:a='1'", "<odd:b/>" + now) + block(" rdf:about=''", "<odd:c>&#65;</odd:c>")},
        {"the block with the empty about wins over an earlier one", packet("%"),
         block(" rdf:about='uuid:1'", old) + "<rdf:Description rdf:about=''/>",
         block(" rdf:about='uuid:1'", "") + block(" rdf:about=''", newDescription("New"))},
        {"with none, the first is made the subject", packet("%"),
         block(" rdf:about = 'uuid:1' odd:a=\"2\"", old), block(" rdf:about = '' odd:a=\"2\"", now)},
        {"an about is added where there is none", packet("%"), block("", old), block(" rdf:about=\"\"", now)},
        {"an about without its prefix is the same attribute", packet("%"),
         "<rdf:Description about='uuid:1'/>", block(" about=''", newDescription("New"))},
        {"no rdf:Description", packet("<!-- empty -->%"), "", newBlock},
        {"no rdf:RDF", "%", "<x:xmpmeta xmlns:x='adobe:ns:meta/'/>",
         "<x:xmpmeta xmlns:x='adobe:ns:meta/'>" + rdf(newBlock) + "</x:xmpmeta>"},
        {"a second rdf:RDF beside the first goes", "<x:m xmlns:x='x'>%\n</x:m>",
         rdf("<rdf:Description rdf:about=''/>") + " " + rdf("<rdf:Description rdf:about=''/>"),
         rdf(block(" rdf:about='' " + dcDeclaration, newDescription("New"))) + " "},
        {"prefixes of another choice",
         "<r:RDF xmlns:r=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\"><r:Description r:about=\"%"
         "</r:Alt></d:description></r:Description></r:RDF>",
         "uuid:1\"><d:description xmlns:d='http://purl.org/dc/elements/1.1/'><r:Alt>"
         "<r:li xml:lang=\"x-default\">old</r:li><r:li xml:lang=\"en-US\"/>",
         "\" " + dcDeclaration + " " + rdfDeclaration +
             "><d:description xmlns:d='http://purl.org/dc/elements/1.1/'><r:Alt>"
             "<r:li xml:lang=\"x-default\">New</r:li><r:li xml:lang=\"en-US\">New</r:li>"},
        {"a caption of another namespace is no caption", subject("<odd:description>x</odd:description>%"),
         old, now},
        {"byte-order mark, declaration, entities, line ends and padding stay",
         "\xEF\xBB\xBF<?xml  version='1.0' encoding='utf-8' ?>\r\n<?xpacket begin='\xEF\xBB\xBF'?>" +
             subject("\r\n\t<odd:f b='&quot;&#x41;'  a = \"2\">&amp;&gt;</odd:f >%") +
             "  \r\n   \n<?xpacket end='w'?>\n\n",
         old, now},
        {"a packet that stood alone does not any more", "<?xml version='1.0' standalone = '%",
         "yes' ?>" + subject(old), "no' ?>" + subject(now)},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const QByteArray after = QByteArray(row.file).replace("%", row.after);
        EXPECT_EQ(written(QByteArray(row.file).replace("%", row.before), u"New"_s), after);
        EXPECT_EQ(written(after, u"New"_s), after);
    }
}

TEST(XMPWriterCaption, TheTemplateKeepsItsLayout) {
    const SidecarFile file("");
    QFile::remove(file.path());
    XMPWriter().createMissingSidecar(file.path());
    const QByteArray empty = file.bytes();
    EXPECT_EQ(empty.size(), 498);
    EXPECT_EQ(readSidecar(empty).facts.caption, u""_s);
    QByteArray expected = empty;
    expected.replace("\"x-default\"></rdf:li>\n            </rdf:Alt>",
                     "\"x-default\">New</rdf:li>\n            " + newItem("en-US", "New") + "</rdf:Alt>");
    EXPECT_EQ(written(empty, u"New"_s), expected);
}

TEST(XMPWriterCaption, EveryCaptionComesBackAsItWas) {
    for (const QString& caption :
         {u""_s, u" "_s, u"R&D <b>\"5 > 3\"</b> 'it' ]]> &amp; &#65; %1 \\n"_s,
          u"line\nline\r\nline\rend\t."_s, u"\U0001F3C8 Zoë \u65E5\u672C e\u0301 \u2028 \u0085"_s,
          QString(300'000, u'x')}) {
        for (const QByteArray& sidecar :
             {subject(described(bothItems("old"))), subject(""),
              QByteArray("<?xml version='1.0' encoding='ISO-8859-1'?>") + subject("<odd:x>\xE9</odd:x>"),
              QByteArray("<?xml version='1.0' encoding='US-ASCII'?>") + subject("")}) {
            written(sidecar, caption);
        }
    }
    const SidecarFile file(subject(""));
    XMPWriter().writeDefaultCaption(u"a\u0001b\u000Bc\uFFFEd"_s + QChar(0xD800) + u"e"_s, file.path());
    EXPECT_EQ(readSidecar(file.bytes()).facts.caption, u"abcde"_s) << "without what XML cannot hold";
}

TEST(XMPWriterCaption, Utf16StaysUtf16) {
    const QString text = QString::fromUtf8(
        "<?xml version='1.0' encoding='UTF-16' standalone='yes'?>" +
        subject("<odd:x>Zo\xC3\xAB</odd:x>" +
                described(bothItems("old")).replace("<rdf:Alt>", "plain<!-- c --><rdf:Alt>")));
    QString expected = text;
    expected.remove(u"plain"_s).replace(u"old"_s, u"\U0001F3C8 &amp; Zoë"_s).replace(u"'yes'"_s, u"'no'"_s);
    for (const auto encoding : {QStringConverter::Utf16LE, QStringConverter::Utf16BE}) {
        QStringEncoder encode(encoding, QStringConverter::Flag::WriteBom);
        QStringEncoder encodeExpected(encoding, QStringConverter::Flag::WriteBom);
        EXPECT_EQ(written(encode(text), u"\U0001F3C8 & Zoë"_s), QByteArray(encodeExpected(expected)));
        QStringEncoder encodeUnmarked(encoding, QStringConverter::Flag::Stateless);
        const XmlDocument document = XmlDocument::parse(encodeUnmarked(u"\n<a b=\"\u4E00\"/>"_s));
        EXPECT_EQ(document.root().attribute(u"b"), u"\u4E00"_s);
    }
}

TEST(XMPWriterCaption, RefusesHostileInputAndLeavesItUntouched) {
    const QByteArray head = "<?xml version='1.0'?>";
    const struct {
        const char* what;
        QByteArray bytes;
        QString words;
    } rows[] = {
        {"nesting", QByteArray("<a>").repeated(100'000) + QByteArray("</a>").repeated(100'000), u"nested"_s},
        {"elements", "<a>" + QByteArray("<b/>").repeated(1'000'001) + "</a>", u"million"_s},
        {"namespaces", "<a" + attributesOfNamespaces(100'001) + "/>", u"more than 100,000 namespaces"_s},
        {"entity bomb", head + "<!DOCTYPE a [<!ENTITY b 'b'><!ENTITY c '&b;&b;&b;&b;'>]><a>&c;</a>",
         u"document type"_s},
        {"external entity", head + "<!DOCTYPE a [<!ENTITY x SYSTEM 'file:///etc/passwd'>]><a>&x;</a>",
         u"document type"_s},
        {"NUL bytes", subject("") + QByteArray(10, '\0'), u"not well formed"_s},
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
        EXPECT_TRUE(refusal<XmlError>(row.bytes).contains(row.words, Qt::CaseInsensitive));
    }
}

TEST(XMPWriterCaption, ReadsFiftyMegabytesOfTextAndRefusesMoreThanItsLimit) {
    const auto sidecarOf = [](qsizetype size) {
        return subject("<odd:x>" + QByteArray(size, 'x') + "</odd:x>");
    };
    written(sidecarOf(50'000'000), u"New"_s);
    EXPECT_THROW(readSidecar(sidecarOf(XmlDocument::maximumSize)), FileError);
}

TEST(XMPWriterCaption, HostileNumbersCostNoMoreThanInProportion) {
    // Each is quick, but would take minutes if every element, attribute or packet looked at all others.
    const auto packets = [](int count) {
        return "<x>" + QByteArray("<b/>").repeated(count) + QByteArray("<RDF/>").repeated(count) + "</x>";
    };
    const auto attributes = [](int count) {
        return "<r:RDF xmlns:r='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><r:Description" +
               attributesOfNamespaces(count) + "/></r:RDF>";
    };
    const auto captionsInCaptions = [](int count) {
        return subject(QByteArray("<dc:description>").repeated(count) + "<Alt>" +
                       QByteArray("<li xml:lang='de'/>").repeated(100 * count) + "</Alt>" +
                       QByteArray("</dc:description>").repeated(count));
    };
    const struct {
        const char* what;
        std::function<QByteArray(int count)> sidecar;
        int count;
    } rows[] = {{"surplus packets", packets, 4'000},
                {"attributes", attributes, 7'500},
                {"captions", captionsInCaptions, 225}};
    for (const auto& row : rows) {
        const double few = cost(row.sidecar(row.count));
        const double many = cost(row.sidecar(4 * row.count));
        EXPECT_LT(many, 10 * few) << row.what;
    }
}

TEST(XMPWriterCaption, IsRefusedWhereItWouldNotBeRead) {
    const QByteArray kept =
        described(bothItems("old")).replace("<dc:description", "<dc:description pm-keep='1'");
    const QByteArray rows[] = {
        // The only place for the caption is inside a caption that must go.
        "<dc:description " + dcDeclaration + ">" + subject("<odd:a/>") + "</dc:description>",
        // Another tool's caption must be kept and comes first.
        packet("<rdf:Description rdf:about='uuid:1'>" + kept +
               "</rdf:Description><rdf:Description rdf:about=''/>"),
        // A foreign list that looks like ours comes before ours.
        subject("<dc:description xmlns:r=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\" "
                "xmlns:rdf='f'><rdf:Alt>" +
                item("x-default", "old") + "</rdf:Alt><r:Alt/></dc:description>"),
    };
    for (const QByteArray& sidecar : rows) {
        SCOPED_TRACE(sidecar.constData());
        refusal<XMPError>(sidecar);
    }
}

} // namespace ostrelle
