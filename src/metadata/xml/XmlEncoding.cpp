// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/xml/XmlEncoding.h"

#include <QList>
#include <QStringDecoder>
#include <QStringEncoder>
#include <array>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QStringConverter::Encoding qtEncoding(XmlEncoding encoding) {
    switch (encoding) {
    case XmlEncoding::utf16LittleEndian:
        return QStringConverter::Utf16LE;
    case XmlEncoding::utf16BigEndian:
        return QStringConverter::Utf16BE;
    case XmlEncoding::latin1:
    case XmlEncoding::ascii:
        return QStringConverter::Latin1;
    case XmlEncoding::utf8:
        break;
    }
    return QStringConverter::Utf8;
}

bool isForbidden(QChar unit) {
    const bool isControl = unit < u' ' && unit != u'\t' && unit != u'\n' && unit != u'\r';
    return isControl || unit.isSurrogate() || unit == QChar(0xFFFE) || unit == QChar(0xFFFF);
}

QString resolved(QStringView name) {
    struct Entity {
        QStringView name;
        char16_t character;
    };
    static constexpr std::array predefined = {Entity{u"amp", u'&'}, Entity{u"lt", u'<'}, Entity{u"gt", u'>'},
                                              Entity{u"quot", u'"'}, Entity{u"apos", u'\''}};
    for (const Entity& entity : predefined) {
        if (entity.name == name) {
            return QString(entity.character);
        }
    }
    const bool isHexadecimal = name.startsWith(u"#x");
    bool isNumber = false;
    const char32_t code = name.sliced(isHexadecimal ? 2 : 1).toUInt(&isNumber, isHexadecimal ? 16 : 10);
    return isNumber ? QString::fromUcs4(&code, 1) : QString();
}

} // namespace

qsizetype unitSize(XmlEncoding encoding) {
    return encoding == XmlEncoding::utf16LittleEndian || encoding == XmlEncoding::utf16BigEndian ? 2 : 1;
}

char16_t unitAt(QByteArrayView bytes, qsizetype offset, XmlEncoding encoding) {
    const auto byte = [bytes](qsizetype at) { return static_cast<unsigned char>(bytes[at]); };
    switch (encoding) {
    case XmlEncoding::utf16LittleEndian:
        return static_cast<char16_t>(byte(offset) | byte(offset + 1) << 8);
    case XmlEncoding::utf16BigEndian:
        return static_cast<char16_t>(byte(offset) << 8 | byte(offset + 1));
    default:
        return byte(offset);
    }
}

bool isXmlBlank(char16_t unit) {
    return unit == u' ' || unit == u'\t' || unit == u'\n' || unit == u'\r';
}

QString decodeXml(QByteArrayView bytes, XmlEncoding encoding) {
    QStringDecoder decoder(qtEncoding(encoding), QStringConverter::Flag::Stateless);
    return decoder.decode(bytes);
}

QByteArray encodeXml(QStringView markup, XmlEncoding encoding) {
    QStringEncoder encoder(qtEncoding(encoding), QStringConverter::Flag::Stateless);
    if (encoding != XmlEncoding::latin1 && encoding != XmlEncoding::ascii) {
        return encoder.encode(markup);
    }
    const char32_t last = encoding == XmlEncoding::ascii ? 0x7F : 0xFF;
    QString writable;
    for (const char32_t character : markup.toUcs4()) {
        writable += character > last ? u"&#%1;"_s.arg(static_cast<uint>(character))
                                     : QString::fromUcs4(&character, 1);
    }
    return encoder.encode(writable);
}

QString withoutForbiddenCharacters(QStringView text) {
    QString kept;
    kept.reserve(text.size());
    for (qsizetype at = 0; at < text.size(); ++at) {
        const bool isPair =
            text[at].isHighSurrogate() && at + 1 < text.size() && text[at + 1].isLowSurrogate();
        if (isPair) {
            kept += text.sliced(at, 2);
            ++at;
        } else if (!isForbidden(text[at])) {
            kept += text[at];
        }
    }
    return kept;
}

QString escapeXmlText(QStringView text) {
    QString escaped = text.toString();
    escaped.replace(u'&', u"&amp;"_s);
    escaped.replace(u'<', u"&lt;"_s);
    escaped.replace(u'>', u"&gt;"_s);
    escaped.replace(u'\r', u"&#13;"_s);
    return escaped;
}

QString resolveXmlReferences(QStringView markup) {
    QString text;
    while (!markup.isEmpty()) {
        const qsizetype ampersand = markup.indexOf(u'&');
        const qsizetype semicolon = ampersand < 0 ? -1 : markup.indexOf(u';', ampersand);
        if (semicolon < 0) {
            break;
        }
        text += markup.first(ampersand);
        text += resolved(markup.sliced(ampersand + 1, semicolon - ampersand - 1));
        markup = markup.sliced(semicolon + 1);
    }
    return text += markup;
}

} // namespace ostrelle
