// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/ServiceEndpoints.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

ServiceEndpoints ServiceEndpoints::builtIn() {
    return {.model = QUrl(QStringLiteral(OSTRELLE_MODEL_URL))};
}

} // namespace ostrelle
