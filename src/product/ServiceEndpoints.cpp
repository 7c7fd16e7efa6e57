// SPDX-License-Identifier: GPL-3.0-or-later
#include "product/ServiceEndpoints.h"

#include <QByteArray>
#include <QUtf8StringView>
#include <algorithm>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// A control character in a header's value would start another header.
bool isHeaderValue(const QByteArray& text) {
    return QUtf8StringView(text).isValidUtf8() && std::all_of(text.begin(), text.end(), [](char c) {
               return static_cast<unsigned char>(c) >= 0x20;
           });
}

} // namespace

QString decodeKey(const QByteArray& base64) {
    const auto decoded = QByteArray::fromBase64Encoding(base64, QByteArray::AbortOnBase64DecodingErrors);
    return decoded && isHeaderValue(*decoded) ? QString::fromUtf8(*decoded) : QString();
}

ServiceEndpoints ServiceEndpoints::builtIn() {
    return {.model = QUrl(QStringLiteral(OSTRELLE_MODEL_URL)),
            .prompt = QUrl(QStringLiteral(OSTRELLE_PROMPT_URL)),
            .promptKey = decodeKey(QByteArrayLiteral(OSTRELLE_PROMPT_KEY)),
            .analytics = QUrl(QStringLiteral(OSTRELLE_ANALYTICS_URL)),
            .analyticsKey = decodeKey(QByteArrayLiteral(OSTRELLE_ANALYTICS_KEY)),
            .measurement = QUrl(QStringLiteral(OSTRELLE_MEASUREMENT_URL)),
            .measurementId = QStringLiteral(OSTRELLE_MEASUREMENT_ID),
            .measurementSecret = decodeKey(QByteArrayLiteral(OSTRELLE_MEASUREMENT_SECRET)),
            .updates = QUrl(QStringLiteral(OSTRELLE_UPDATES_URL)),
            .updatesKey = QByteArray::fromBase64(QByteArrayLiteral(OSTRELLE_UPDATES_KEY))};
}

} // namespace ostrelle
