// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/MetadataText.h"

#include <iconv.h>

#include <QStringDecoder>
#include <QStringEncoder>
#include <algorithm>
#include <array>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr QByteArrayView asciiPrefix("ASCII\0\0\0", 8);
constexpr QByteArrayView unicodePrefix("UNICODE\0", 8);
constexpr QByteArrayView jisPrefix("JIS\0\0\0\0\0", 8);
constexpr QByteArrayView undefinedPrefix("\0\0\0\0\0\0\0\0", 8);

QByteArrayView withoutTrailingNuls(QByteArrayView bytes) {
    while (bytes.endsWith('\0')) {
        bytes.chop(1);
    }
    return bytes;
}

/// Whether most units are below 256 only when read in this order. Writers disagree on which order a comment
/// has, and the block's own is no more than a hint.
bool looksBigEndian(QByteArrayView bytes, bool expected) {
    qsizetype firstZero = 0;
    qsizetype secondZero = 0;
    for (qsizetype at = 0; at + 1 < bytes.size(); at += 2) {
        firstZero += bytes[at] == '\0' && bytes[at + 1] != '\0' ? 1 : 0;
        secondZero += bytes[at] != '\0' && bytes[at + 1] == '\0' ? 1 : 0;
    }
    return firstZero == secondZero ? expected : firstZero > secondZero;
}

QString decodeUtf16(QByteArrayView bytes, bool isBigEndian) {
    if (bytes.startsWith("\xFE\xFF") || bytes.startsWith("\xFF\xFE")) {
        isBigEndian = bytes.startsWith("\xFE\xFF");
        bytes = bytes.sliced(2);
    } else {
        isBigEndian = looksBigEndian(bytes, isBigEndian);
    }
    QStringDecoder decoder(isBigEndian ? QStringConverter::Utf16BE : QStringConverter::Utf16LE,
                           QStringConverter::Flag::Stateless);
    QString text = decoder.decode(bytes.first(bytes.size() / 2 * 2));
    while (text.endsWith(QChar(u'\0'))) {
        text.chop(1);
    }
    return text;
}

/// JIS X 0208 in its seven-bit form with escape sequences.
QString decodeJis(QByteArrayView bytes) {
    const iconv_t converter = ::iconv_open("UTF-8", "ISO-2022-JP");
    if (converter == reinterpret_cast<iconv_t>(-1)) { // NOLINT(performance-no-int-to-ptr): POSIX says so
        return decodeUndeclared(bytes);
    }
    QByteArray input = bytes.toByteArray();
    QByteArray output(input.size() * 3 + 16, '\0');
    char* in = input.data();
    char* out = output.data();
    auto inLeft = static_cast<std::size_t>(input.size());
    auto outLeft = static_cast<std::size_t>(output.size());
    const std::size_t result = ::iconv(converter, &in, &inLeft, &out, &outLeft);
    ::iconv_close(converter);
    return result == static_cast<std::size_t>(-1)
               ? decodeUndeclared(bytes)
               : QString::fromUtf8(output.constData(), out - output.data());
}

} // namespace

bool isAscii(QByteArrayView bytes) {
    return std::ranges::all_of(bytes, [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

bool isAscii(QStringView text) {
    return std::ranges::all_of(text, [](QChar unit) { return unit < QChar(0x80); });
}

bool isUtf8(QByteArrayView bytes) {
    QStringDecoder decoder(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
    const QString text = decoder.decode(bytes);
    return !decoder.hasError() && text.size() >= 0;
}

QString decodeWindows1252(QByteArrayView bytes) {
    static constexpr QStringView upper = // 0x80 to 0x9F; the five bytes that stand for nothing stay
        u"\u20AC\u0081\u201A\u0192\u201E\u2026\u2020\u2021\u02C6\u2030\u0160\u2039\u0152\u008D\u017D\u008F"
        u"\u0090\u2018\u2019\u201C\u201D\u2022\u2013\u2014\u02DC\u2122\u0161\u203A\u0153\u009D\u017E\u0178";
    QString text = QString::fromLatin1(bytes);
    for (QChar& unit : text) {
        if (unit >= QChar(0x80) && unit <= QChar(0x9F)) {
            unit = upper[unit.unicode() - 0x80];
        }
    }
    return text;
}

QString decodeUndeclared(QByteArrayView bytes) {
    return isUtf8(bytes) ? QString::fromUtf8(bytes) : decodeWindows1252(bytes);
}

QString decodeExifText(QByteArrayView value) {
    const qsizetype end = value.indexOf('\0');
    return decodeUndeclared(end < 0 ? value : value.first(end));
}

QString decodeUserComment(QByteArrayView value, bool isBigEndian) {
    constexpr qsizetype prefixSize = 8;
    if (value.startsWith(unicodePrefix)) {
        return decodeUtf16(value.sliced(prefixSize), isBigEndian);
    }
    if (value.startsWith(jisPrefix)) {
        return decodeJis(withoutTrailingNuls(value.sliced(prefixSize)));
    }
    const bool hasPrefix = value.startsWith(asciiPrefix) || value.startsWith(undefinedPrefix);
    return decodeExifText(value.sliced(hasPrefix ? prefixSize : 0)); // some writers leave the prefix away
}

QByteArray encodeUserComment(const QString& text, bool isBigEndian) {
    if (isAscii(text)) {
        return asciiPrefix.toByteArray() + text.toLatin1();
    }
    QStringEncoder encoder(isBigEndian ? QStringConverter::Utf16BE : QStringConverter::Utf16LE,
                           QStringConverter::Flag::Stateless);
    return unicodePrefix.toByteArray() + QByteArray(encoder.encode(text));
}

} // namespace ostrelle
