// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/settings/ServerTab.h"

#include "shell/settings/SettingsActions.h"
#include "shell/toolkit/ActionButton.h"
#include "shell/toolkit/Card.h"
#include "shell/toolkit/PortField.h"
#include "shell/toolkit/SecureField.h"
#include "shell/toolkit/SegmentedControl.h"
#include "shell/toolkit/SettingRow.h"
#include "shell/toolkit/StatusMark.h"
#include "shell/toolkit/Theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>
#include <optional>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const InfoText encryptionInfo{
    u"Encryption"_s,
    {{u"• The password and the pictures cross the network as they are\n"
      "• For servers in a network of your own, and for cameras and transmitters that know nothing else"_s,
      u"None:"_s},
     {u"• The connection is encrypted (explicit TLS); without encryption there is none\n"
      "• The server's certificate must be signed by an authority that this computer knows. If it is not, "
      "Test Connection shows its fingerprint, and you can trust just that one"_s,
      u"TLS:"_s}}};

QLineEdit* makeField(const QString& objectName, const QString& prompt = {}) {
    auto* field = new QLineEdit;
    field->setObjectName(objectName);
    field->setPlaceholderText(prompt);
    return field;
}

} // namespace

ServerTab::ServerTab(ShellParts parts, SettingsActions& actions, QWidget* parent)
    : QWidget(parent), m_parts(parts), m_actions(actions) {
    setObjectName(u"serverTab"_s);
    auto* card = new Card(u"FTP Server Configuration"_s, this);
    card->addPaddedRow(
        makeLabel(u"Files will be downloaded to the destination folder and then captioned. Ostrelle will "
                  "wait for files to finish uploading to the FTP server before downloading to your local "
                  "machine."_s,
                  TypeSize::small, TextTone::dim));
    QLineEdit* host = makeField(u"ftpHost"_s, u"ftp.example.com"_s);
    setFocusProxy(host);
    addField(*card, u"Host:"_s, host,
             {&SettingsStore::ftpHost, &SettingsStore::setFtpHost, &SettingsStore::ftpHostChanged});
    addPort(*card);
    addField(
        *card, u"Username:"_s, makeField(u"ftpUsername"_s),
        {&SettingsStore::ftpUsername, &SettingsStore::setFtpUsername, &SettingsStore::ftpUsernameChanged});
    addPassword(*card);
    addEncryption(*card);
    addTrustedCertificate(*card);
    addField(*card, u"Path:"_s, makeField(u"ftpPath"_s, u"/remote/path"_s),
             {&SettingsStore::ftpPath, &SettingsStore::setFtpPath, &SettingsStore::ftpPathChanged});

    m_status = new StatusMark;
    m_status->setObjectName(u"ftpConnectionStatus"_s);
    m_status->setWordWrap(true);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(measure::cardSpacing);
    layout->addWidget(card);
    layout->addLayout(makeButtons());
    layout->addWidget(m_status);
    layout->addStretch(1);
    showStatus();
    connect(&m_parts.settings, &SettingsStore::ftpConnectionStatusChanged, this, &ServerTab::showStatus);
    connect(&m_actions, &SettingsActions::isTestingConnectionChanged, this, &ServerTab::showStatus);
}

void ServerTab::addField(Card& card, const QString& name, QLineEdit* field, SettingAccess<QString> setting) {
    card.addRow(new SettingRow(name, field));
    bindSetting(field, m_parts.settings, setting);
}

void ServerTab::addPort(Card& card) {
    auto* port = new PortField;
    port->setObjectName(u"ftpPort"_s);
    port->setMaximumWidth(90);
    card.addRow(new SettingRow(u"Port:"_s, port));
    SettingsStore& settings = m_parts.settings;
    const auto show = [port, &settings] { port->setPort(settings.ftpPort()); };
    show();
    connect(&settings, &SettingsStore::ftpPortChanged, port, show);
    connect(port, &PortField::entered, &settings, &SettingsStore::setFtpPort);
}

void ServerTab::addEncryption(Card& card) {
    QStringList names;
    for (const auto& row : rawValueRows<FtpEncryption>()) {
        names.append(row.label.toString());
    }
    auto* encryption = new SegmentedControl(names, u"ftpEncryption"_s);
    encryption->setAccessibleName(u"Encryption"_s);
    auto* row = new SettingRow(u"Encryption:"_s, encryption);
    card.addRow(row);
    row->setInfo(encryptionInfo);
    SettingsStore& settings = m_parts.settings;
    const auto show = [encryption, &settings] {
        encryption->setCurrentIndex(static_cast<int>(settings.ftpEncryption()));
    };
    show();
    connect(&settings, &SettingsStore::ftpEncryptionChanged, encryption, show);
    connect(encryption, &SegmentedControl::chosen, &settings,
            [&settings](int index) { settings.setFtpEncryption(static_cast<FtpEncryption>(index)); });
}

void ServerTab::addTrustedCertificate(Card& card) {
    auto* forget = new ActionButton(u"Forget"_s, ActionKind::destroying);
    forget->setObjectName(u"forgetCertificate"_s);
    auto* row = new SettingRow(u"Trusted Certificate:"_s, forget);
    auto* fingerprint = makeLabel({}, TypeSize::small, TextTone::dim);
    fingerprint->setTextInteractionFlags(Qt::TextSelectableByMouse);
    row->setSecondLine(fingerprint);
    card.addRow(row);
    SettingsStore& settings = m_parts.settings;
    const auto show = [row, fingerprint, &settings] {
        // In two lines, which fit the window.
        QString text = settings.ftpTrustedCertificate();
        row->setVisible(!text.isEmpty());
        fingerprint->setText(text.replace(text.size() / 2, 1, u"\n"_s));
    };
    show();
    connect(&settings, &SettingsStore::ftpTrustedCertificateChanged, row, show);
    connect(forget, &ActionButton::clicked, &settings,
            [&settings] { settings.setFtpTrustedCertificate({}); });
}

/// Sets the password when the field is left, so that the keyring does not save each letter.
void ServerTab::addPassword(Card& card) {
    m_password = new SecureField(u"ftpPassword"_s);
    auto* row = new SettingRow(u"Password"_s, m_password);
    auto* warning = new StatusMark(StatusTone::missing,
                                   u"The keyring does not keep this password. It lasts until you quit."_s);
    warning->setObjectName(u"passwordNotKept"_s);
    warning->setFont(typeFont(TypeSize::small));
    warning->setWordWrap(true);
    row->setSecondLine(warning);
    card.addRow(row);
    const auto warn = [warning, &settings = m_parts.settings] {
        warning->setVisible(!settings.isPasswordKept());
    };
    warn();
    connect(&m_parts.settings, &SettingsStore::isPasswordKeptChanged, warning, warn);
    const auto show = [this] {
        if (!m_password->isModified()) { // the keyring may answer while the user types
            m_password->setText(m_parts.settings.ftpPassword());
        }
    };
    show();
    connect(&m_parts.settings, &SettingsStore::ftpPasswordChanged, m_password, show);
    connect(m_password, &QLineEdit::editingFinished, this, &ServerTab::savePassword);
}

void ServerTab::savePassword() {
    if (m_password->isModified()) {
        m_password->setModified(false);
        m_parts.settings.setFtpPassword(m_password->text());
    }
}

QLayout* ServerTab::makeButtons() {
    auto* test = new ActionButton(u"Test Connection"_s, ActionKind::main);
    test->setObjectName(u"testConnection"_s);
    test->setText(u"&Test Connection"_s);
    auto* clear = new ActionButton(u"Clear FTP Settings"_s, ActionKind::destroying);
    clear->setObjectName(u"clearFtpSettings"_s);
    clear->setText(u"C&lear FTP Settings"_s);
    for (ActionButton* button : {test, clear}) { // a mnemonic leaves the focus in the field
        connect(button, &ActionButton::clicked, this, &ServerTab::savePassword);
    }
    connect(test, &ActionButton::clicked, &m_actions, &SettingsActions::testConnection);
    connect(clear, &ActionButton::clicked, &m_actions, &SettingsActions::clearFtpSettings);

    auto* line = new QHBoxLayout;
    line->addWidget(test);
    line->addStretch();
    line->addWidget(clear);
    return line;
}

void ServerTab::showStatus() {
    const std::optional<QString> status = m_parts.settings.ftpConnectionStatus();
    if (m_actions.isTestingConnection()) {
        m_status->setStatus(StatusTone::plain, u"Connecting…"_s);
    } else if (status) {
        const bool isGood = *status == connectionSucceeded;
        m_status->setStatus(isGood ? StatusTone::good : StatusTone::destroying,
                            isGood ? u"Connection successful"_s : *status);
    }
    m_status->setVisible(status || m_actions.isTestingConnection());
}

} // namespace ostrelle
