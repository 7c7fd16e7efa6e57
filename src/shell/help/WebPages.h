// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QUrl>

namespace ostrelle::web {

/// What the program is and does.
inline QUrl productPage() {
    return QUrl(QStringLiteral("https://ostrelle.example/"));
}

/// Where users send feedback.
inline QUrl feedbackPage() {
    return QUrl(QStringLiteral("https://ostrelle.example/feedback"));
}

/// Where OpenAI issues API keys.
inline QUrl keyPage() {
    return QUrl(QStringLiteral("https://platform.openai.com/api-keys"));
}

} // namespace ostrelle::web
