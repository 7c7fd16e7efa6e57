// SPDX-License-Identifier: GPL-3.0-or-later
#include "product/ApiKey.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

const QString apiKeyName = u"OPENAI_API_KEY"_s;

QString apiKey(const DefaultsStore& defaults) {
    return defaults.get<QString>(apiKeyName).value_or(QString());
}

} // namespace ostrelle
