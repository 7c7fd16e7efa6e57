// SPDX-License-Identifier: GPL-3.0-or-later
#include "product/AppFolders.h"

#include <QStandardPaths>

namespace ostrelle {

using namespace Qt::StringLiterals;

const QString applicationName = u"Ostrelle Captions"_s;
const QString applicationIdentifier = u"com.tobinvasquel.OstrelleCaptions"_s;

AppFolders AppFolders::ofDesktop() {
    const auto below = [](QStandardPaths::StandardLocation location) {
        return QStandardPaths::writableLocation(location) + u'/' + applicationIdentifier;
    };
    return {.config = below(QStandardPaths::GenericConfigLocation),
            .data = below(QStandardPaths::GenericDataLocation),
            .promptCache = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                           u"/OstrelleCaptions"_s,
            .manifest = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                        u"/Ostrelle Captions"_s,
            .cache = below(QStandardPaths::GenericCacheLocation),
            // Otherwise Qt would invent one and say so on standard error.
            .runtime = qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR")
                           ? QString()
                           : below(QStandardPaths::RuntimeLocation)};
}

} // namespace ostrelle
