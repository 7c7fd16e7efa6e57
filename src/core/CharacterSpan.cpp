// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/CharacterSpan.h"

#include <QTextBoundaryFinder>
#include <algorithm>
#include <string_view>

namespace ostrelle {

namespace {

bool isCombiningMark(char16_t unit) {
    return unit >= 0x0300 && unit <= 0x036F;
}

/// Line ends, other controls and the soft hyphen: no mark joins them.
bool isControl(char16_t unit) {
    return unit < 0x0020 || (unit >= 0x007F && unit <= 0x009F) || unit == 0x00AD;
}

/// True for code units among which only combining marks, and CR with LF, make one character of several.
bool isPlain(char16_t unit) {
    return unit <= 0x036F || (unit >= 0x0400 && unit <= 0x0482) // Latin, marks, Cyrillic
           || (unit >= 0x2010 && unit <= 0x2027)                // dashes and quotes
           || (unit >= 0x4E00 && unit <= 0x9FFF)                // CJK ideographs
           || (unit >= 0xAC00 && unit <= 0xD7A3);               // Hangul syllables
}

bool joins(char16_t unit, char16_t previous) {
    return (isCombiningMark(unit) && !isControl(previous)) || (unit == u'\n' && previous == u'\r');
}

CharacterSpan spanInPlainText(QStringView text, qsizetype most) {
    CharacterSpan span;
    char16_t previous = u'\n';
    for (const char16_t unit : std::u16string_view(text.utf16(), static_cast<std::size_t>(text.size()))) {
        if (!joins(unit, previous) && span.characters++ == most) {
            return {most, span.codeUnits};
        }
        ++span.codeUnits;
        previous = unit;
    }
    return span;
}

CharacterSpan spanInAnyText(QStringView text, qsizetype most) {
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text.data(), text.size());
    CharacterSpan span;
    while (span.characters < most && finder.toNextBoundary() > 0) {
        span = {span.characters + 1, finder.position()};
    }
    return span;
}

/// The text up to and with its first line feed. A character ends there in any case.
QStringView firstLine(QStringView text) {
    const qsizetype lineFeed = text.indexOf(u'\n');
    return lineFeed < 0 ? text : text.first(lineFeed + 1);
}

CharacterSpan spanInLine(QStringView line, qsizetype most) {
    const bool isPlainText = std::all_of(line.utf16(), line.utf16() + line.size(), isPlain);
    return isPlainText ? spanInPlainText(line, most) : spanInAnyText(line, most);
}

} // namespace

CharacterSpan spanOfCharacters(QStringView text, qsizetype most) {
    CharacterSpan span;
    while (span.codeUnits < text.size() && span.characters < most) {
        const CharacterSpan inLine =
            spanInLine(firstLine(text.sliced(span.codeUnits)), most - span.characters);
        span = {span.characters + inLine.characters, span.codeUnits + inLine.codeUnits};
    }
    return span;
}

} // namespace ostrelle
