// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringView>
#include <limits>

namespace ostrelle {

/// The beginning of a text, measured in user-perceived characters and in UTF-16 code units.
struct CharacterSpan {
    qsizetype characters = 0;
    qsizetype codeUnits = 0;

    bool operator==(const CharacterSpan&) const = default;
};

/// The first `most` user-perceived characters of the text (extended grapheme clusters, Unicode Annex 29), or
/// all of it. Fast on long texts: common scripts cost little more than a look at each code unit.
CharacterSpan spanOfCharacters(QStringView text, qsizetype most = std::numeric_limits<qsizetype>::max());

} // namespace ostrelle
