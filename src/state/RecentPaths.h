// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DefaultsStore.h"
#include "state/SettingsStore.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <optional>

namespace ostrelle {

/// The folders or files that a setting has led to, so that one click brings back what was lost with a drive
/// that is not there, or was used for another game. Kept over restarts.
class RecentPaths : public QObject {
    Q_OBJECT

public:
    static constexpr qsizetype mostPaths = 8;

    /// A path of the settings.
    struct Source {
        QString key; ///< of the list
        std::optional<QString> (SettingsStore::*path)() const;
        void (SettingsStore::*changed)();
    };

    /// Both must outlive the object.
    RecentPaths(DefaultsStore& defaults, const SettingsStore& settings, Source source,
                QObject* parent = nullptr);

    /// The last one first. The present one is not among them.
    QStringList others() const;

Q_SIGNALS:
    void changed();

private:
    QStringList all() const;
    void remember();

    DefaultsStore& m_defaults;
    const SettingsStore& m_settings;
    const Source m_source;
};

} // namespace ostrelle
