// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

namespace ostrelle {

/// The text of a reply's body, or nothing when the bytes are not UTF-8.
std::optional<QString> strictUtf8(const QByteArray& bytes);

/// Replaces each occurrence of the key in the text: some servers repeat the key they reject, and their
/// messages end up in logs.
QString withoutKey(QString text, const QString& key);

/// False for a text that, as a header's value, would start another header.
bool isHeaderValue(const QString& text);

/// Makes a file name safe where a line break would start a new header or heading: control characters and line
/// separators become underscores. Other names stay as they are.
QString onOneLine(QString fileName);

} // namespace ostrelle
