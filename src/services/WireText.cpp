// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/WireText.h"

#include <QUtf8StringView>
#include <algorithm>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

bool breaksLine(QChar character) {
    const QChar::Category category = character.category();
    return category == QChar::Other_Control || category == QChar::Separator_Line ||
           category == QChar::Separator_Paragraph;
}

} // namespace

std::optional<QString> strictUtf8(const QByteArray& bytes) {
    return QUtf8StringView(bytes).isValidUtf8() ? std::optional(QString::fromUtf8(bytes)) : std::nullopt;
}

QString withoutKey(QString text, const QString& key) {
    constexpr qsizetype shortestKey = 8; // replacing what is not really a key would only garble the text
    const QString secret = key.trimmed();
    return secret.size() < shortestKey ? text : text.replace(secret, u"[API key]"_s);
}

bool isHeaderValue(const QString& text) {
    return std::none_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 0x20 && c != u'\t'; });
}

QString onOneLine(QString fileName) {
    std::replace_if(fileName.begin(), fileName.end(), breaksLine, QChar(u'_'));
    return fileName;
}

} // namespace ostrelle
