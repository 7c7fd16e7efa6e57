// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/Games.h"

#include <QJsonDocument>
#include <QVariantList>
#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString gamesKey = u"games"_s;
const QString currentKey = u"currentGame"_s;
const QString nameField = u"name"_s;

using Path = std::optional<QString>;

struct PathField {
    QString name;
    Path (SettingsStore::*get)() const;
    void (SettingsStore::*set)(const Path&);
};

struct TextField {
    QString name;
    QString (SettingsStore::*get)() const;
    void (SettingsStore::*set)(const QString&);
};

const std::array pathFields = {
    PathField{u"ingestFolder"_s, &SettingsStore::ingestFolder, &SettingsStore::setIngestFolder},
    PathField{u"destinationFolder"_s, &SettingsStore::destinationFolder,
              &SettingsStore::setDestinationFolder},
    PathField{u"codeReplacementsFile"_s, &SettingsStore::codeReplacementsFile,
              &SettingsStore::setCodeReplacementsFile}};

const std::array textFields = {
    TextField{u"team1Name"_s, &SettingsStore::team1Name, &SettingsStore::setTeam1Name},
    TextField{u"team1Color"_s, &SettingsStore::team1Color, &SettingsStore::setTeam1Color},
    TextField{u"team2Name"_s, &SettingsStore::team2Name, &SettingsStore::setTeam2Name},
    TextField{u"team2Color"_s, &SettingsStore::team2Color, &SettingsStore::setTeam2Color}};

constexpr std::array followed = {&SettingsStore::ingestFolderChanged,
                                 &SettingsStore::destinationFolderChanged,
                                 &SettingsStore::codeReplacementsFileChanged,
                                 &SettingsStore::sourceTypeChanged,
                                 &SettingsStore::sportChanged,
                                 &SettingsStore::captionStyleChanged,
                                 &SettingsStore::useTeamIdentificationChanged,
                                 &SettingsStore::includeOffenseDefenseChanged,
                                 &SettingsStore::team1NameChanged,
                                 &SettingsStore::team1ColorChanged,
                                 &SettingsStore::team2NameChanged,
                                 &SettingsStore::team2ColorChanged};

template <typename Enum>
std::optional<Enum> choiceIn(const QJsonObject& game, const QString& field) {
    return fromRawValue<Enum>(game.value(field).toString());
}

auto named(const QString& name) {
    return [name](const QJsonObject& game) { return game.value(nameField).toString() == name; };
}

} // namespace

Games::Games(DefaultsStore& defaults, SettingsStore& settings, QObject* parent)
    : QObject(parent), m_defaults(defaults), m_settings(settings) {
    load();
    for (const auto settingChanged : followed) {
        connect(&settings, settingChanged, this, &Games::follow);
    }
}

/// Somebody may have edited what is stored.
void Games::load() {
    const QVariantList stored = m_defaults.get<QVariantList>(gamesKey).value_or(QVariantList());
    for (const QVariant& bytes : stored) {
        const QJsonObject game = QJsonDocument::fromJson(bytes.toByteArray()).object();
        const QString name = game.value(nameField).toString();
        const bool isKnown = std::any_of(m_games.cbegin(), m_games.cend(), named(name));
        if (!name.isEmpty() && !isKnown && m_games.size() < mostGames) {
            m_games.append(game);
        }
    }
    const QString current = m_defaults.get<QString>(currentKey).value_or(QString());
    const auto game = std::find_if(m_games.cbegin(), m_games.cend(), named(current));
    if (game != m_games.cend()) {
        m_current = current;
        m_settings.setCaptionStyle(
            choiceIn<CaptionStyle>(*game, u"captionStyle"_s).value_or(m_settings.captionStyle()));
    }
}

QStringList Games::names() const {
    QStringList names;
    for (const QJsonObject& game : m_games) {
        names.append(game.value(nameField).toString());
    }
    return names;
}

void Games::begin(const QString& name) {
    if (!m_current.isEmpty()) {
        QJsonObject next = snapshot();
        for (const PathField& field : pathFields) {
            next.remove(field.name);
        }
        next[u"team1Name"_s] = QString();
        next[u"team2Name"_s] = QString();
        apply(next);
    }
    m_current = name;
    m_games.prepend(snapshot());
    m_games.resize(std::min(m_games.size(), mostGames));
    store();
}

void Games::recall(const QString& name) {
    const auto game = std::find_if(m_games.cbegin(), m_games.cend(), named(name));
    if (game != m_games.cend()) {
        m_current = name;
        apply(QJsonObject(*game));
        store();
    }
}

void Games::remove(const QString& name) {
    m_games.removeIf(named(name));
    if (m_current == name) {
        m_current.clear();
    }
    store();
}

void Games::store() {
    QVariantList games;
    for (const QJsonObject& game : std::as_const(m_games)) {
        games.append(QJsonDocument(game).toJson(QJsonDocument::Compact));
    }
    m_defaults.setAll({{gamesKey, games}, {currentKey, m_current}});
    Q_EMIT changed();
}

/// A path that is lost, as its drive is not there, stays the game's.
void Games::follow() {
    const auto game = std::find_if(m_games.begin(), m_games.end(), named(m_current));
    if (m_isApplying || game == m_games.end()) {
        return;
    }
    QJsonObject now = snapshot();
    for (const PathField& field : pathFields) {
        if (!now.contains(field.name) && game->contains(field.name)) {
            now[field.name] = game->value(field.name);
        }
    }
    if (now != *game) {
        *game = now;
        store();
    }
}

QJsonObject Games::snapshot() const {
    QJsonObject game{{nameField, m_current},
                     {u"sourceType"_s, rawValue(m_settings.sourceType())},
                     {u"sport"_s, rawValue(m_settings.sport())},
                     {u"captionStyle"_s, rawValue(m_settings.captionStyle())},
                     {u"useTeamIdentification"_s, m_settings.useTeamIdentification()},
                     {u"includeOffenseDefense"_s, m_settings.includeOffenseDefense()}};
    for (const PathField& field : pathFields) {
        if (const Path path = (m_settings.*field.get)()) {
            game[field.name] = *path;
        }
    }
    for (const TextField& field : textFields) {
        game[field.name] = (m_settings.*field.get)();
    }
    return game;
}

void Games::apply(const QJsonObject& game) {
    m_isApplying = true;
    m_settings.setSourceType(choiceIn<SourceType>(game, u"sourceType"_s).value_or(m_settings.sourceType()));
    m_settings.setSport(choiceIn<Sport>(game, u"sport"_s).value_or(m_settings.sport()));
    m_settings.setCaptionStyle(
        choiceIn<CaptionStyle>(game, u"captionStyle"_s).value_or(m_settings.captionStyle()));
    m_settings.setUseTeamIdentification(game.value(u"useTeamIdentification"_s).toBool());
    m_settings.setIncludeOffenseDefense(game.value(u"includeOffenseDefense"_s).toBool()); // after the sport
    for (const PathField& field : pathFields) {
        const QString path = game.value(field.name).toString();
        (m_settings.*field.set)(path.isEmpty() ? std::nullopt : Path(path));
    }
    for (const TextField& field : textFields) {
        (m_settings.*field.set)(game.value(field.name).toString());
    }
    m_isApplying = false;
}

} // namespace ostrelle
