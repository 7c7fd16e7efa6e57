// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/panel/ShellParts.h"
#include "shell/toolkit/Card.h"

namespace ostrelle {

class ElidedLabel;
class FileChoiceRow;
class PanelActions;
class Picker;
class StatusMark;

/// Where the images and the roster come from, and which sport is played.
class ConfigurationCard : public Card {
    Q_OBJECT

public:
    /// The actions must outlive the card.
    ConfigurationCard(ShellParts parts, PanelActions& actions, QWidget* parent = nullptr);

private:
    void addSource();
    void addFolders();
    void addRoster();
    void addHost();
    void addSport();
    void addStyle();
    void addAudio();
    void showSource();
    void showHost();
    void showRoster();
    void showSport();

    ShellParts m_parts;
    PanelActions& m_actions;
    Picker* m_source = nullptr;
    FileChoiceRow* m_watchFolder = nullptr;
    QWidget* m_hostRow = nullptr;
    StatusMark* m_hostMissing = nullptr;
    ElidedLabel* m_host = nullptr;
    FileChoiceRow* m_destinationFolder = nullptr;
    FileChoiceRow* m_roster = nullptr;
    Picker* m_sport = nullptr;
};

} // namespace ostrelle
