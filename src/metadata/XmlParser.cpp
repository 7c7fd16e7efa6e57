// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/XmlParser.h"

#include "metadata/XmlError.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr char nameSeparator =
    '\n'; // cannot occur in a name, nor unescaped in a namespace declaration's value

XmlParser& self(void* userData) {
    return *static_cast<XmlParser*>(userData);
}

bool startsWithBytes(QByteArrayView bytes, QByteArrayView start) {
    return bytes.startsWith(start);
}

} // namespace

XmlParser::XmlParser(XmlDocument& document)
    : m_document(document), m_parser(XML_ParserCreateNS(nullptr, nameSeparator)) {
    XML_Parser parser = m_parser.get();
    XML_SetUserData(parser, this);
    XML_SetReturnNSTriplet(parser, 1);
    XML_SetXmlDeclHandler(parser, [](void* data, const char*, const char* encoding, int standalone) {
        self(data).handleDeclaration(encoding, standalone);
    });
    XML_SetStartDoctypeDeclHandler(parser, [](void* data, const char*, const char*, const char*, int) {
        self(data).refuse(u"it declares a document type, which no metadata needs"_s);
    });
    XML_SetElementHandler(
        parser, [](void* data, const char* name, const char**) { self(data).handleStart(name); },
        [](void* data, const char*) { self(data).handleEnd(); });
    XML_SetCharacterDataHandler(
        parser, [](void* data, const char* text, int size) { self(data).handleText(text, size); });
}

void XmlParser::run() {
    const QByteArray& bytes = m_document.m_bytes;
    if (bytes.size() > XmlDocument::maximumSize) {
        throw XmlError(u"The XML was refused: it is larger than 64 MiB."_s);
    }
    settleEncoding({});
    const XML_Status status =
        XML_Parse(m_parser.get(), bytes.constData(), static_cast<int>(bytes.size()), XML_TRUE);
    const bool lacksRoot = XML_GetErrorCode(m_parser.get()) == XML_ERROR_NO_ELEMENTS;
    if (!m_refusal.isEmpty() || (status != XML_STATUS_OK && !lacksRoot)) {
        throw XmlError(failure());
    }
}

QString XmlParser::failure() const {
    if (!m_refusal.isEmpty()) {
        return u"The XML was refused: %1."_s.arg(m_refusal);
    }
    XML_Parser parser = m_parser.get();
    return u"The XML is not well formed: %1 (line %2, column %3)."_s.arg(
        QString::fromUtf8(XML_ErrorString(XML_GetErrorCode(parser))),
        QString::number(XML_GetCurrentLineNumber(parser)),
        QString::number(XML_GetCurrentColumnNumber(parser) + 1));
}

void XmlParser::refuse(const QString& reason) {
    m_refusal = reason;
    XML_StopParser(m_parser.get(), XML_FALSE);
}

/// A byte-order mark or a zero byte in the first character tells UTF-16 (XML 1.0, appendix F); anything
/// else is what the declaration says.
void XmlParser::settleEncoding(QByteArrayView declared) {
    const QByteArrayView bytes = m_document.m_bytes;
    const QByteArray name = declared.toByteArray().toUpper();
    if (startsWithBytes(bytes, "\xFF\xFE") || startsWithBytes(bytes, QByteArrayView("<\0", 2))) {
        m_document.m_encoding = XmlEncoding::utf16LittleEndian;
    } else if (startsWithBytes(bytes, "\xFE\xFF") || startsWithBytes(bytes, QByteArrayView("\0<", 2))) {
        m_document.m_encoding = XmlEncoding::utf16BigEndian;
    } else if (name == "ISO-8859-1") {
        m_document.m_encoding = XmlEncoding::latin1;
    } else if (name == "US-ASCII") {
        m_document.m_encoding = XmlEncoding::ascii;
    } else if (!name.isEmpty() && name != "UTF-8") {
        refuse(u"its encoding %1 is not supported"_s.arg(QString::fromLatin1(name)));
    }
    if (m_document.m_encoding != XmlEncoding::utf8 && startsWithBytes(bytes, "\xEF\xBB\xBF")) {
        refuse(u"its declaration names another encoding than its byte-order mark"_s);
    }
}

void XmlParser::handleDeclaration(const char* encoding, int standalone) {
    if (m_document.m_encoding == XmlEncoding::utf8) {
        settleEncoding(QByteArrayView(encoding));
    }
    if (standalone != 1) {
        return;
    }
    // The declaration is plain ASCII, a code unit a character, so positions in its text are positions in its
    // bytes.
    const XmlSpan declaration = currentSpan();
    const QString text =
        decodeXml(QByteArrayView(m_document.m_bytes).sliced(declaration.begin, declaration.size()),
                  m_document.m_encoding);
    const qsizetype value = text.indexOf("yes"_L1, text.indexOf("standalone"_L1));
    const qsizetype unit = unitSize(m_document.m_encoding);
    m_document.m_standaloneYes =
        XmlSpan{declaration.begin + value * unit, declaration.begin + (value + 3) * unit};
}

XmlSpan XmlParser::currentSpan() const {
    const qsizetype begin = XML_GetCurrentByteIndex(m_parser.get());
    return {begin, begin + XML_GetCurrentByteCount(m_parser.get())};
}

/// expat gives "uri\nlocal\nprefix", with the uri and the prefix missing where there are none.
quint32 XmlParser::nameIndex(QByteArrayView expandedName) {
    const QByteArray key = expandedName.toByteArray();
    const auto known = m_nameIndices.constFind(key);
    if (known != m_nameIndices.constEnd()) {
        return *known;
    }
    const QByteArrayList parts = key.split(nameSeparator);
    XmlDocument::Name name;
    if (parts.size() == 1) {
        name.localName = parts[0];
    } else {
        name = {parts[0], parts[1], parts.value(2)};
    }
    const auto index = static_cast<quint32>(m_document.m_names.size());
    m_document.m_names.push_back(std::move(name));
    m_nameIndices.insert(key, index);
    return index;
}

void XmlParser::handleStart(const char* expandedName) {
    if (m_open.size() >= XmlDocument::maximumDepth) {
        return refuse(u"its elements are nested more than 1,000 deep"_s);
    }
    if (m_document.m_nodes.size() >= XmlDocument::maximumElements) {
        return refuse(u"it has more than a million elements"_s);
    }
    const auto index = static_cast<quint32>(m_document.m_nodes.size());
    const XmlSpan tag = currentSpan();
    XmlDocument::Node node;
    node.name = nameIndex(expandedName);
    node.startTagBegin = static_cast<quint32>(tag.begin);
    node.startTagEnd = static_cast<quint32>(tag.end);
    node.textBegin = static_cast<quint32>(m_document.m_text.size());
    if (!m_open.empty()) {
        node.parent = m_open.back();
        XmlDocument::Node& parent = m_document.m_nodes[node.parent];
        quint32& link = m_lastChild.back() == XmlDocument::none
                            ? parent.firstChild
                            : m_document.m_nodes[m_lastChild.back()].nextSibling;
        link = index;
        m_lastChild.back() = index;
    }
    m_document.m_nodes.push_back(node);
    m_open.push_back(index);
    m_lastChild.push_back(XmlDocument::none);
}

void XmlParser::handleEnd() {
    XmlDocument::Node& node = m_document.m_nodes[m_open.back()];
    const XmlSpan tag = currentSpan();
    node.endTagBegin = static_cast<quint32>(tag.begin);
    node.endTagEnd = static_cast<quint32>(tag.end);
    if (tag.size() == 0) { // an empty tag ends where it began to
        node.endTagBegin = node.endTagEnd = node.startTagEnd;
    }
    node.textEnd = static_cast<quint32>(m_document.m_text.size());
    m_open.pop_back();
    m_lastChild.pop_back();
}

void XmlParser::handleText(const char* utf8, int size) {
    if (!m_open.empty()) {
        m_document.m_text.append(utf8, size);
    }
}

} // namespace ostrelle
