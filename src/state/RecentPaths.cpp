// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/RecentPaths.h"

#include <QVariantList>
#include <algorithm>
#include <utility>

namespace ostrelle {

RecentPaths::RecentPaths(DefaultsStore& defaults, const SettingsStore& settings, Source source,
                         QObject* parent)
    : QObject(parent), m_defaults(defaults), m_settings(settings), m_source(std::move(source)) {
    connect(&settings, m_source.changed, this, &RecentPaths::remember);
    remember();
}

QStringList RecentPaths::others() const {
    QStringList paths = all();
    paths.removeAll((m_settings.*m_source.path)().value_or(QString()));
    return paths;
}

/// Somebody may have edited the stored list.
QStringList RecentPaths::all() const {
    QStringList paths;
    const QVariantList stored = m_defaults.get<QVariantList>(m_source.key).value_or(QVariantList());
    for (const QVariant& value : stored) {
        const QString path = value.toString();
        if (!path.isEmpty() && !paths.contains(path) && paths.size() < mostPaths) {
            paths.append(path);
        }
    }
    return paths;
}

void RecentPaths::remember() {
    const std::optional<QString> path = (m_settings.*m_source.path)();
    const QStringList before = all();
    if (path && before.value(0) != *path) {
        QStringList paths = before;
        paths.removeAll(*path);
        paths.prepend(*path);
        QVariantList stored;
        for (const QString& recent : paths.first(std::min(paths.size(), mostPaths))) {
            stored.append(recent);
        }
        m_defaults.set(m_source.key, stored);
    }
    Q_EMIT changed();
}

} // namespace ostrelle
