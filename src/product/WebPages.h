// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QUrl>

namespace ostrelle {

/// The product's own pages. One whose address is empty is not offered.
struct WebPages {
    QUrl product = {};  ///< what the program is and does, and where new versions are
    QUrl feedback = {}; ///< where users send feedback

    /// Those that this program was built with.
    static WebPages builtIn() {
        return {.product = QUrl(QStringLiteral(OSTRELLE_PRODUCT_URL)),
                .feedback = QUrl(QStringLiteral(OSTRELLE_FEEDBACK_URL))};
    }
};

/// Where OpenAI issues API keys.
inline QUrl keyPage() {
    return QUrl(QStringLiteral("https://platform.openai.com/api-keys"));
}

} // namespace ostrelle
