// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/facts/MetadataText.h"

#include <iconv.h>

#include <QList>
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

QString decodeUtf16In(bool isBigEndian, QByteArrayView bytes) {
    QStringDecoder decoder(isBigEndian ? QStringConverter::Utf16BE : QStringConverter::Utf16LE,
                           QStringConverter::Flag::Stateless);
    QString text = decoder.decode(bytes.first(bytes.size() / 2 * 2));
    while (text.endsWith(QChar(u'\0'))) {
        text.chop(1);
    }
    return text;
}

/// Latin text looks like this in the wrong byte order.
bool isMainlyWithoutLowBytes(const QString& text) {
    return 2 * std::ranges::count_if(text, [](QChar unit) { return unit.cell() == 0 && unit.row() != 0; }) >
           text.size();
}

/// Other text in the wrong byte order turns into random characters, and soon one that nobody writes.
bool isWritable(const QString& text) {
    const auto isWritten = [](char32_t character) {
        const QChar::Category category = QChar::category(character);
        const bool isLineEnd = character == U'\n' || character == U'\r' || character == U'\t';
        return character != QChar::ReplacementCharacter && category != QChar::Other_NotAssigned &&
               category != QChar::Other_PrivateUse && (category != QChar::Other_Control || isLineEnd);
    };
    return std::ranges::all_of(text.toUcs4(), isWritten);
}

/// In the block's byte order, which most programs write and read. Some always use the same one, so if the
/// block's order yields nonsense, it is the other.
QString decodeUtf16(QByteArrayView bytes, bool isBigEndian) {
    if (bytes.startsWith("\xFE\xFF") || bytes.startsWith("\xFF\xFE")) {
        return decodeUtf16In(bytes.startsWith("\xFE\xFF"), bytes.sliced(2));
    }
    const QString text = decodeUtf16In(isBigEndian, bytes);
    const QString other = decodeUtf16In(!isBigEndian, bytes);
    const bool isNonsense = isMainlyWithoutLowBytes(text) || (!isWritable(text) && isWritable(other));
    return isNonsense ? other : text;
}

/// Readers that guess the byte order look for the zero bytes of Latin text.
bool needsByteOrderMark(const QString& text) {
    return 2 * std::ranges::count_if(text, [](QChar unit) { return unit.row() == 0; }) <= text.size();
}

/// Seven-bit JIS X 0208 with escape sequences.
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
    static constexpr QStringView upper = // 0x80 to 0x9F; the five undefined bytes stay
        u"\u20AC\u0081\u201A\u0192\u201E\u2026\u2020\u2021\u02C6\u2030\u0160\u2039\u0152\u008D\u017D\u008F"
        "\u0090\u2018\u2019\u201C\u201D\u2022\u2013\u2014\u02DC\u2122\u0161\u203A\u0153\u009D\u017E\u0178";
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
    return decodeExifText(value.sliced(hasPrefix ? prefixSize : 0)); // some writers omit the prefix
}

QByteArray encodeUserComment(const QString& text, bool isBigEndian) {
    if (isAscii(text)) {
        return asciiPrefix.toByteArray() + text.toLatin1();
    }
    QStringEncoder encoder(isBigEndian ? QStringConverter::Utf16BE : QStringConverter::Utf16LE,
                           QStringConverter::Flag::Stateless);
    const QString mark = needsByteOrderMark(text) ? QString(QChar::ByteOrderMark) : QString();
    return unicodePrefix.toByteArray() + QByteArray(encoder.encode(mark + text));
}

} // namespace ostrelle
