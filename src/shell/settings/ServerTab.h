// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/panel/ShellParts.h"
#include "shell/toolkit/SettingBinding.h"

#include <QWidget>

namespace ostrelle {

class Card;
class SecureField;
class SettingsActions;
class StatusMark;

/// How to reach the remote server.
class ServerTab : public QWidget {
    Q_OBJECT

public:
    /// The actions must outlive the tab.
    ServerTab(ShellParts parts, SettingsActions& actions, QWidget* parent = nullptr);

private:
    void addField(Card& card, const QString& name, QLineEdit* field, SettingAccess<QString> setting);
    void addPort(Card& card);
    void addEncryption(Card& card);
    void addTrustedCertificate(Card& card);
    QLayout* makeButtons();
    void addPassword(Card& card);
    void savePassword();
    void showStatus();

    ShellParts m_parts;
    SettingsActions& m_actions;
    SecureField* m_password = nullptr;
    StatusMark* m_status = nullptr;
};

} // namespace ostrelle
