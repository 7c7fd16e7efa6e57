// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

namespace ostrelle {

bool isAscii(QByteArrayView bytes);
bool isAscii(QStringView text);
bool isUtf8(QByteArrayView bytes);

/// Decodes text of no declared encoding: as UTF-8 if it is valid, otherwise as Windows-1252, formerly the
/// encoding of most programs.
QString decodeUndeclared(QByteArrayView bytes);
QString decodeWindows1252(QByteArrayView bytes);

/// An EXIF text field, up to its first NUL.
QString decodeExifText(QByteArrayView value);

/// An EXIF user comment after its eight bytes of charset. `isBigEndian` is the byte order of the EXIF block.
QString decodeUserComment(QByteArrayView value, bool isBigEndian);

/// The reverse, such that other tools read every character: ASCII where that suffices, otherwise UTF-16, with
/// a byte-order mark unless the text is mainly Latin.
QByteArray encodeUserComment(const QString& text, bool isBigEndian);

} // namespace ostrelle
