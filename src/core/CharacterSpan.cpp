// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/CharacterSpan.h"

#include <QTextBoundaryFinder>
#include <algorithm>
#include <string_view>

namespace ostrelle {

namespace {

/// Combining marks and variation selectors.
bool isMark(char16_t unit) {
    return (unit >= 0x0300 && unit <= 0x036F) || (unit >= 0xFE00 && unit <= 0xFE0F);
}

/// Line ends, other controls and the soft hyphen: marks do not attach to them.
bool isControl(char16_t unit) {
    return unit < 0x0020 || (unit >= 0x007F && unit <= 0x009F) || unit == 0x00AD;
}

/// True for code units that never form a character together, apart from marks and CR LF.
bool isPlain(char16_t unit) {
    return unit <= 0x036F || (unit >= 0x0400 && unit <= 0x0482) // Latin, marks, Cyrillic
           || (unit >= 0x2010 && unit <= 0x2027)                // dashes and quotes
           || (unit >= 0x2100 && unit <= 0x2BFF)                // symbols
           || (unit >= 0x4E00 && unit <= 0x9FFF)                // CJK ideographs
           || (unit >= 0xAC00 && unit <= 0xD7A3)                // Hangul syllables
           || (unit >= 0xFE00 && unit <= 0xFE0F);               // selectors
}

/// A high surrogate of a pictograph, U+1F000 to U+1FBFF.
bool leadsPictograph(char16_t unit) {
    return unit >= 0xD83C && unit <= 0xD83E;
}

/// Pictographs are plain too, except the regional indicators that make up flags.
bool isPlainPictograph(char16_t lead, char16_t trail) {
    return leadsPictograph(lead) && trail >= 0xDC00 && trail <= 0xDFFF &&
           !(lead == 0xD83C && trail >= 0xDDE6 && trail <= 0xDDFF);
}

bool isSkinTone(char16_t lead, char16_t trail) {
    return lead == 0xD83C && trail >= 0xDFFB && trail <= 0xDFFF;
}

bool joins(char16_t unit, char16_t previous) {
    return (isMark(unit) && !isControl(previous)) || (unit == u'\n' && previous == u'\r');
}

CharacterSpan spanInPlainText(std::u16string_view text, qsizetype most) {
    CharacterSpan span;
    char16_t previous = u'\n';
    for (const char16_t unit : text) {
        if (!joins(unit, previous) && span.characters++ == most) {
            return {most, span.codeUnits};
        }
        ++span.codeUnits;
        previous = unit;
    }
    return span;
}

/// True if everything that is not plain is a plain pictograph; `at` is the first such place.
bool isPlainAroundPictographs(const char16_t* at, const char16_t* end) {
    while (at != end) {
        if (end - at < 2 || !isPlainPictograph(at[0], at[1])) {
            return false;
        }
        at = std::find_if_not(at + 2, end, isPlain);
    }
    return true;
}

CharacterSpan spanAroundPictographs(std::u16string_view text, qsizetype most) {
    CharacterSpan span;
    char16_t previous = u'\n';
    for (std::size_t at = 0; at < text.size();) {
        const char16_t unit = text[at];
        const bool isPair = leadsPictograph(unit);
        const bool isJoined =
            isPair ? isSkinTone(unit, text[at + 1]) && !isControl(previous) : joins(unit, previous);
        if (!isJoined && span.characters++ == most) {
            return {most, span.codeUnits};
        }
        at += isPair ? 2 : 1;
        span.codeUnits = static_cast<qsizetype>(at);
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

/// The text up to and including its first line feed, which always ends a character.
QStringView firstLine(QStringView text) {
    const qsizetype lineFeed = text.indexOf(u'\n');
    return lineFeed < 0 ? text : text.first(lineFeed + 1);
}

CharacterSpan spanInLine(QStringView line, qsizetype most) {
    const std::u16string_view units(line.utf16(), static_cast<std::size_t>(line.size()));
    const char16_t* end = units.data() + units.size();
    const char16_t* odd = std::find_if_not(units.data(), end, isPlain);
    if (odd == end) {
        return spanInPlainText(units, most);
    }
    return isPlainAroundPictographs(odd, end) ? spanAroundPictographs(units, most)
                                              : spanInAnyText(line, most);
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
