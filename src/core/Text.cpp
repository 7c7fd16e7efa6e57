// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/Text.h"

#include <QTextBoundaryFinder>

namespace ostrelle {

namespace {

QTextBoundaryFinder characterFinder(QStringView text) {
    return {QTextBoundaryFinder::Grapheme, text.data(), text.size()};
}

} // namespace

qsizetype characterCount(QStringView text) {
    QTextBoundaryFinder finder = characterFinder(text);
    qsizetype count = 0;
    while (finder.toNextBoundary() > 0) {
        ++count;
    }
    return count;
}

QString firstCharacters(QStringView text, qsizetype count) {
    QTextBoundaryFinder finder = characterFinder(text);
    qsizetype end = 0;
    for (qsizetype seen = 0; seen < count; ++seen) {
        const qsizetype next = finder.toNextBoundary();
        if (next < 0) {
            break;
        }
        end = next;
    }
    return text.first(end).toString();
}

QString lastCharacters(QStringView text, qsizetype count) {
    QTextBoundaryFinder finder = characterFinder(text);
    finder.toEnd();
    qsizetype begin = text.size();
    for (qsizetype seen = 0; seen < count; ++seen) {
        const qsizetype previous = finder.toPreviousBoundary();
        if (previous < 0) {
            break;
        }
        begin = previous;
    }
    return text.sliced(begin).toString();
}

} // namespace ostrelle
