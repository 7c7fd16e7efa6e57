// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace ostrelle {

/// Captions and names come from others, so control characters that a terminal would obey become a mark.
inline QString printable(QString text) {
    for (QChar& character : text) {
        if (character.category() == QChar::Other_Control && character != u'\n') {
            character = QChar::ReplacementCharacter;
        }
    }
    return text;
}

} // namespace ostrelle
