// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DefaultsStore.h"
#include "state/SettingsStore.h"

#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

namespace ostrelle {

/// Named sets of the settings that change from game to game: source, folders, roster, sport, teams and style.
/// The current game follows the settings. Kept over restarts.
class Games : public QObject {
    Q_OBJECT

public:
    static constexpr qsizetype mostGames = 100;
    static constexpr qsizetype longestName = 60;

    /// Both must outlive the object. A caption style of the current game is set at once, as the settings do
    /// not keep it.
    Games(DefaultsStore& defaults, SettingsStore& settings, QObject* parent = nullptr);

    /// The newest first.
    QStringList names() const;
    /// Empty without one.
    QString current() const { return m_current; }

    /// Begins a game and makes it the current one. The first takes the settings as they are; any other begins
    /// without folders, roster and team names, so that none of the last game's is taken for its own. The name
    /// must not be empty or that of another game.
    void begin(const QString& name);
    /// Replaces the settings by those of the game, which becomes the current one.
    void recall(const QString& name);
    /// Forgets the game; the settings stay.
    void remove(const QString& name);

Q_SIGNALS:
    void changed();

private:
    void load();
    void store();
    void follow();
    QJsonObject snapshot() const;
    void apply(const QJsonObject& game);

    DefaultsStore& m_defaults;
    SettingsStore& m_settings;
    QList<QJsonObject> m_games;
    QString m_current;
    bool m_isApplying = false;
};

} // namespace ostrelle
