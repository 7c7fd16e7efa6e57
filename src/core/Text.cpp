// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/Text.h"

#include "core/CharacterSpan.h"

#include <QLocale>
#include <QTextBoundaryFinder>

namespace ostrelle {

qsizetype characterCount(QStringView text) {
    return spanOfCharacters(text).characters;
}

QString firstCharacters(QStringView text, qsizetype count) {
    return text.first(spanOfCharacters(text, count).codeUnits).toString();
}

QString lastCharacters(QStringView text, qsizetype count) {
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text.data(), text.size());
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

QString plural(qint64 count) {
    return count == 1 ? QString() : QStringLiteral("s");
}

QString dataSize(qint64 bytes) {
    return QLocale::c().formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
}

QString shortNameList(const QStringList& names) {
    constexpr qsizetype named = 3;
    const QString list = names.mid(0, named).join(QStringLiteral(", "));
    if (names.size() <= named) {
        return list;
    }
    return list + QStringLiteral(" and ") + QString::number(names.size() - named) + QStringLiteral(" more");
}

} // namespace ostrelle
