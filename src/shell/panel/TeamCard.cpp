// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panel/TeamCard.h"

#include "shell/toolkit/SettingRow.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const InfoText jerseyInfo{
    u"Identify by Jersey Color"_s,
    {{u"Tells the AI which team wears which color, so that it looks a player's number up in the right team's "
      "roster."_s},
     {u"Enter each team's name and choose the color of its jerseys."_s}}};

InfoText offenseDefenseInfo(Sport sport) {
    InfoText info{
        u"Include Offense/Defense"_s,
        {{u"Useful for sports like football where multiple players may share the same jersey number (e.g., "
          "#44 on offense and #44 on defense)."_s},
         {u"If enabled, the caption will include names of BOTH the offensive and defensive players with the "
          "same jersey number so you can pick the correct one."_s}}};
    if (sport != Sport::football) {
        info.paragraphs.append({u"\nNote: This option is only available for Football."_s});
    }
    return info;
}

} // namespace

TeamCard::TeamCard(SettingsStore& settings, QWidget* parent)
    : Card(u"Team and Player Identification"_s, parent), m_settings(settings) {
    setObjectName(u"teams"_s);
    auto* byColor = new Switch;
    byColor->setObjectName(u"useTeamIdentification"_s);
    auto* row = new SettingRow(u"Identify by Jersey Color"_s, byColor);
    addRow(row);
    row->setInfo(jerseyInfo);
    bindSetting(byColor, settings,
                {&SettingsStore::useTeamIdentification, &SettingsStore::setUseTeamIdentification,
                 &SettingsStore::useTeamIdentificationChanged});
    addTeam(1, {&SettingsStore::team1Name, &SettingsStore::setTeam1Name, &SettingsStore::team1NameChanged},
            {&SettingsStore::team1Color, &SettingsStore::setTeam1Color, &SettingsStore::team1ColorChanged});
    addTeam(2, {&SettingsStore::team2Name, &SettingsStore::setTeam2Name, &SettingsStore::team2NameChanged},
            {&SettingsStore::team2Color, &SettingsStore::setTeam2Color, &SettingsStore::team2ColorChanged});
    addOffenseDefense();
    showRows();
    connect(&settings, &SettingsStore::useTeamIdentificationChanged, this, &TeamCard::showRows);
    connect(&settings, &SettingsStore::sportChanged, this, &TeamCard::showRows);
}

void TeamCard::addTeam(int number, SettingAccess<QString> name, SettingAccess<QString> color) {
    auto* field = new QLineEdit;
    field->setObjectName(u"team%1Name"_s.arg(number));
    field->setMaximumWidth(150);
    field->setAcceptDrops(false); // drops here are for the panel
    auto* swatch = new ColorSwatchPicker;
    swatch->setObjectName(u"team%1Color"_s.arg(number));
    auto* row = new SettingRow(u"Team %1 Name"_s.arg(number), field);
    swatch->setAccessibleName(u"Team %1 Color"_s.arg(number));
    row->addControl(swatch);
    addRow(row);
    m_teams.append(row);
    bindSetting(field, m_settings, name);
    bindSetting(swatch, m_settings, color);
}

void TeamCard::addOffenseDefense() {
    auto* both = new Switch;
    both->setObjectName(u"includeOffenseDefense"_s);
    m_offenseDefense = new SettingRow(u"Include both Offense/Defense in Captions"_s, both);
    addRow(m_offenseDefense);
    bindSetting(both, m_settings,
                {&SettingsStore::includeOffenseDefense, &SettingsStore::setIncludeOffenseDefense,
                 &SettingsStore::includeOffenseDefenseChanged});
}

void TeamCard::showRows() {
    for (SettingRow* team : m_teams) {
        team->setVisible(m_settings.useTeamIdentification());
    }
    m_offenseDefense->setInfo(offenseDefenseInfo(m_settings.sport()));
    m_offenseDefense->setVisible(m_settings.sport() == Sport::football);
}

} // namespace ostrelle
