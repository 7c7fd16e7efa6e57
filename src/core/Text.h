// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

namespace ostrelle {

/// The number of user-perceived characters (extended grapheme clusters, Unicode Annex 29): an emoji with
/// its modifiers is one, a decomposed "é" is one, CR LF is one.
qsizetype characterCount(QStringView text);

/// The first `count` user-perceived characters of the text, or all of it.
QString firstCharacters(QStringView text, qsizetype count);

/// The last `count` user-perceived characters of the text, or all of it.
QString lastCharacters(QStringView text, qsizetype count);

/// The plural ending of a counted noun: nothing for 1, otherwise "s".
QString plural(qint64 count);

/// An amount of data in decimal units: "24.1 MB".
QString dataSize(qint64 bytes);

/// The first three names, and how many more there are: "a.jpg, b.jpg, c.jpg and 2 more".
QString shortNameList(const QStringList& names);

} // namespace ostrelle
