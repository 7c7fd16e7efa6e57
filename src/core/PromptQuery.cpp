// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/PromptQuery.h"

#include <QStringList>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QString truthValue(bool value) {
    return value ? u"true"_s : u"false"_s;
}

} // namespace

QList<QPair<QString, QString>> queryItems(const PromptQuery& query) {
    return {{u"style"_s, rawValue(query.style)},
            {u"sport"_s, rawValue(query.sport)},
            {u"fallbackBehavior"_s, rawValue(query.fallback)},
            {u"includeOffenseDefense"_s, truthValue(query.includeOffenseDefense)},
            {u"prioritizeAudioFiles"_s, truthValue(query.prioritizeAudioFiles)},
            {u"version"_s, query.version}};
}

QString cacheKey(const PromptQuery& query) {
    QStringList parts;
    for (const auto& [name, value] : queryItems(query)) {
        parts.append(value);
    }
    parts.move(parts.size() - 1, 0); // the version comes first
    return parts.join(u'-');
}

} // namespace ostrelle
