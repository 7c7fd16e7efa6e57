// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/panel/ShellParts.h"

#include <QWidget>

namespace ostrelle {

class ActionButton;
class Card;
class SecureField;
class SettingsActions;
class StatusMark;
class Switch;

/// The key of the model service, and the program's links to other programs.
class ApiTab : public QWidget {
    Q_OBJECT

public:
    /// The actions must outlive the tab.
    ApiTab(ShellParts parts, SettingsActions& actions, QWidget* parent = nullptr);

protected:
    void showEvent(QShowEvent* event) override;

private:
    void addKeyState(Card& card);
    void addKeyEntry(Card& card);
    void addIntegrations();
    void showKey();
    void tellOfPhotoMechanic(bool on);

    ShellParts m_parts;
    SettingsActions& m_actions;
    StatusMark* m_state = nullptr;
    ActionButton* m_clear = nullptr;
    QWidget* m_entry = nullptr;
    QWidget* m_verdict = nullptr;
    SecureField* m_field = nullptr;
    Switch* m_startAtLogin = nullptr;
};

} // namespace ostrelle
