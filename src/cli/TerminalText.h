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

/// The same for what has to stay on its line, such as a file's name.
inline QString printableName(QString name) {
    return printable(name.replace(u'\n', QChar::ReplacementCharacter));
}

} // namespace ostrelle
