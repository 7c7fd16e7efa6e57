// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

namespace ostrelle {

bool isAscii(QByteArrayView bytes);
bool isAscii(QStringView text);
bool isUtf8(QByteArrayView bytes);

/// Text of no declared encoding: UTF-8 when it is that, otherwise Windows-1252, which most programs on most
/// desktops wrote before.
QString decodeUndeclared(QByteArrayView bytes);
QString decodeWindows1252(QByteArrayView bytes);

/// An EXIF text field, which ends at its first NUL.
QString decodeExifText(QByteArrayView value);

/// An EXIF user comment with its eight bytes of charset. `isBigEndian` is the byte order of the EXIF block.
QString decodeUserComment(QByteArrayView value, bool isBigEndian);

/// The same, so that other tools read every character: as ASCII where that holds the text, or as UTF-16, with
/// a byte-order mark unless the text is mainly Latin.
QByteArray encodeUserComment(const QString& text, bool isBigEndian);

} // namespace ostrelle
