// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

namespace ostrelle {

/// The text of a reply's body, or nothing when the bytes are not UTF-8.
std::optional<QString> strictUtf8(const QByteArray& bytes);

/// The text with each occurrence of the key struck out: some servers repeat the key that they refuse, and
/// what they say ends up in logs.
QString withoutKey(QString text, const QString& key);

/// False for a text that, as the value of a header, would begin another header.
bool isHeaderValue(const QString& text);

/// A file name for a place of which a line break would make something else, a header or a heading: each
/// control character and line separator is an underscore, and all other names are as they were.
QString onOneLine(QString fileName);

} // namespace ostrelle
