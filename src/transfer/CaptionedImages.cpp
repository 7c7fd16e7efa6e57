// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/CaptionedImages.h"

#include <QSet>
#include <chrono>

namespace ostrelle {

void CaptionedImages::enterFolder(const QString& folder) {
    if (m_folder != folder) {
        *this = {};
        m_folder = folder;
    }
}

void CaptionedImages::keepOnly(const QStringList& names) {
    if (m_readings.size() <= names.size()) {
        return; // few have gone, or none
    }
    const QSet<QString> kept(names.begin(), names.end());
    m_readings.removeIf([&](const auto& reading) { return !kept.contains(reading.key()); });
    m_settled.removeIf([&](const auto& image) { return !kept.contains(image.key()); });
}

/// A file may change twice within one tick of its file system's clock, which is two seconds on a memory card:
/// the second change does not show in the stamp. So it takes a second reading, when the stamp is old.
void CaptionedImages::add(const QString& name, const MetadataStamp& stamp, const QDateTime& before,
                          const QDateTime& after) {
    constexpr std::chrono::milliseconds longestTick = std::chrono::seconds(5);
    const auto known = m_readings.constFind(name);
    const bool isSame = known != m_readings.constEnd() && known->stamp == stamp && known->readAt <= after;
    if (!isSame) {
        m_readings.insert(name, {.stamp = stamp, .readAt = after});
        m_settled.remove(name);
    } else if (known->readAt.msecsTo(before) >= longestTick.count()) {
        m_settled.insert(name, stamp);
    }
}

QStringList withoutUnchanged(const QString& folder, const QStringList& names,
                             const QHash<QString, MetadataStamp>& settled) {
    if (settled.isEmpty()) {
        return names;
    }
    QStringList changed;
    for (const QString& name : names) {
        const auto known = settled.constFind(name);
        if (known == settled.constEnd() || *known != MetadataStamp::of(folder + u'/' + name)) {
            changed.append(name);
        }
    }
    return changed;
}

} // namespace ostrelle
