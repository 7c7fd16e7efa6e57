// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/toolkit/Card.h"
#include "shell/toolkit/SettingBinding.h"

class QLineEdit;

namespace ostrelle {

class SettingRow;

/// How to tell the players of the two teams apart.
class TeamCard : public Card {
    Q_OBJECT

public:
    /// The settings must outlive the card.
    explicit TeamCard(SettingsStore& settings, QWidget* parent = nullptr);

private:
    void addTeam(int number, SettingAccess<QString> name, SettingAccess<QString> color);
    void addOffenseDefense();
    void showRows();

    SettingsStore& m_settings;
    QList<SettingRow*> m_teams;
    SettingRow* m_offenseDefense = nullptr;
};

} // namespace ostrelle
