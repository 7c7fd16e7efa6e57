// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/xml/XmlParser.h"

#include "metadata/xml/ExpatPlace.h"
#include "metadata/xml/XmlError.h"

#include <utility>

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

bool hasLoneSurrogate(QByteArrayView bytes, XmlEncoding encoding) {
    bool isInPair = false;
    for (qsizetype at = 0; unitSize(encoding) == 2 && at + 1 < bytes.size(); at += 2) {
        const QChar unit = unitAt(bytes, at, encoding);
        if (unit.isLowSurrogate() != isInPair) {
            return true;
        }
        isInPair = unit.isHighSurrogate();
    }
    return isInPair;
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
        parser,
        [](void* data, const char* name, const char** attributes) {
            self(data).handleStart(name, attributes);
        },
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
    if (hasLoneSurrogate(bytes, m_document.m_encoding)) { // expat takes one and its neighbour for a character
        throw XmlError(u"The XML is not well formed: it has half a character."_s);
    }
    const XML_Status status =
        XML_Parse(m_parser.get(), bytes.constData(), static_cast<int>(bytes.size()), XML_TRUE);
    if (!m_refusal.isEmpty() || (status != XML_STATUS_OK && !lacksRoot())) {
        throw XmlError(failure());
    }
}

/// expat has one error both for a document without elements and for one that ends inside an element.
bool XmlParser::lacksRoot() const {
    return XML_GetErrorCode(m_parser.get()) == XML_ERROR_NO_ELEMENTS && m_document.m_nodes.empty();
}

QString XmlParser::failure() const {
    if (!m_refusal.isEmpty()) {
        return u"The XML was refused: %1."_s.arg(m_refusal);
    }
    if (!m_open.empty() && XML_GetErrorCode(m_parser.get()) == XML_ERROR_NO_ELEMENTS) {
        return u"The XML is not well formed: it ends inside an element."_s;
    }
    XML_Parser parser = m_parser.get();
    return u"The XML is not well formed: %1 (line %2, column %3)."_s.arg(
        QString::fromUtf8(XML_ErrorString(XML_GetErrorCode(parser))), QString::number(expat::line(parser)),
        QString::number(expat::column(parser) + 1));
}

void XmlParser::refuse(const QString& reason) {
    m_refusal = reason;
    XML_StopParser(m_parser.get(), XML_FALSE);
}

/// A byte-order mark or a zero byte in the first character means UTF-16, as it does to expat: a document
/// starts with ASCII, be it a bracket or a blank. Otherwise the declaration decides.
void XmlParser::settleEncoding(QByteArrayView declared) {
    const QByteArrayView bytes = m_document.m_bytes;
    const QByteArray name = declared.toByteArray().toUpper();
    if (startsWithBytes(bytes, "\xFE\xFF") || startsWithBytes(bytes, QByteArrayView("\0", 1))) {
        m_document.m_encoding = XmlEncoding::utf16BigEndian;
    } else if (startsWithBytes(bytes, "\xFF\xFE") || (bytes.size() > 1 && bytes[1] == '\0')) {
        m_document.m_encoding = XmlEncoding::utf16LittleEndian;
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
    // The declaration is plain ASCII, one code unit per character, so positions in its text are positions in
    // its bytes.
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
    const qsizetype begin = expat::byteIndex(m_parser.get());
    return {begin, begin + expat::byteCount(m_parser.get())};
}

/// expat's form is "uri\nlocal\nprefix", without the uri and the prefix where there are none.
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

/// Adds the namespaces of the attributes that have a prefix, as resolved by expat, which passes their names
/// as "uri\nlocal\nprefix".
void XmlParser::addNamespaces(const char** attributes) {
    for (; *attributes != nullptr; attributes += 2) {
        const QByteArrayView name(*attributes);
        const qsizetype end = name.indexOf(nameSeparator);
        if (end < 0) {
            continue;
        }
        const QByteArray uri = name.first(end).toByteArray();
        auto known = m_namespaceIndices.constFind(uri);
        if (known == m_namespaceIndices.constEnd()) {
            if (m_document.m_namespaces.size() >= XmlDocument::maximumNamespaces) {
                return refuse(u"its attributes are of more than 100,000 namespaces"_s);
            }
            known = m_namespaceIndices.insert(uri, static_cast<quint32>(m_document.m_namespaces.size()));
            m_document.m_namespaces.push_back(uri);
        }
        m_document.m_attributeNamespaces.push_back(*known);
    }
}

void XmlParser::handleStart(const char* expandedName, const char** attributes) {
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
    node.firstNamespace = static_cast<quint32>(m_document.m_attributeNamespaces.size());
    addNamespaces(attributes);
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
    if (tag.size() == 0) { // an empty tag ends where it began
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
