// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/settings/ApiTab.h"

#include "product/ApiKey.h"
#include "shell/panel/KeyEntry.h"
#include "shell/settings/SettingsActions.h"
#include "shell/toolkit/ActionButton.h"
#include "shell/toolkit/Card.h"
#include "shell/toolkit/InfoButton.h"
#include "shell/toolkit/SecureField.h"
#include "shell/toolkit/SettingBinding.h"
#include "shell/toolkit/SettingRow.h"
#include "shell/toolkit/StatusMark.h"
#include "shell/toolkit/Theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const InfoText keyInfo{u"API Key Information"_s,
                       {{u"To use Ostrelle Captions, you need your own OpenAI API key:"_s},
                        {u"1. Create an OpenAI account\n2. Generate an API key\n3. Enter your key below"_s},
                        {u"You pay OpenAI directly for usage (typically $0.01-0.05 per image)."_s}}};

QString boolName(bool value) {
    return value ? u"true"_s : u"false"_s;
}

} // namespace

ApiTab::ApiTab(ShellParts parts, SettingsActions& actions, QWidget* parent)
    : QWidget(parent), m_parts(parts), m_actions(actions) {
    setObjectName(u"apiTab"_s);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(measure::cardSpacing);
    auto* key = new Card(u"OpenAI API Key"_s, this);
    layout->addWidget(key);
    addKeyState(*key);
    addKeyEntry(*key);
    addIntegrations();
    layout->addStretch(1);
    showKey();
    connect(&m_parts.keyCheck, &KeyCheck::changed, this, &ApiTab::showKey);
    connect(&m_parts.settings, &SettingsStore::hasAPIKeyChanged, this, &ApiTab::showKey);
}

void ApiTab::addKeyState(Card& card) {
    auto* row = new QWidget;
    row->setMinimumHeight(measure::rowHeight);
    m_state = new StatusMark;
    m_state->setObjectName(u"keyState"_s);
    auto* info = new InfoButton(keyInfo);
    info->setObjectName(u"keyInfo"_s);
    m_clear = new ActionButton(u"Clear API Key"_s, ActionKind::destroying);
    m_clear->setObjectName(u"clearKey"_s);
    m_clear->setText(u"C&lear API Key"_s);
    connect(m_clear, &ActionButton::clicked, &m_actions, &SettingsActions::clearKey);

    auto* line = new QHBoxLayout(row);
    line->setContentsMargins(measure::cardPadding, 4, measure::cardPadding, 4);
    line->setSpacing(measure::controlSpacing);
    line->addWidget(m_state, 1);
    line->addWidget(info);
    line->addWidget(m_clear);
    card.addRow(row);
}

void ApiTab::addKeyEntry(Card& card) {
    auto* entry = new KeyEntry(m_parts);
    m_field = entry->field();
    connect(entry, &KeyEntry::entered, &m_actions, &SettingsActions::saveKey);
    auto* content = new QWidget;
    auto* lines = new QVBoxLayout(content);
    lines->setContentsMargins(0, 0, 0, 0);
    lines->setSpacing(measure::controlSpacing);
    lines->addWidget(makeLabel(u"Enter your OpenAI API key to continue processing images"_s, TypeSize::text,
                               TextTone::dim));
    lines->addWidget(entry);
    m_entry = card.addPaddedRow(content);
    m_verdict = card.addPaddedRow(new KeyVerdictLine(m_parts.keyCheck));
}

void ApiTab::addIntegrations() {
    auto* launch = new Switch;
    launch->setObjectName(u"launchWithPhotoMechanic"_s);
    auto* row = new SettingRow(u"Auto-Launch with Photo Mechanic"_s, launch);
    row->setSecondLine(makeLabel(u"Automatically launch Ostrelle Captions when Photo Mechanic opens."_s,
                                 TypeSize::small, TextTone::dim));
    auto* card = new Card(u"Integrations"_s, this);
    card->addRow(row);
    m_startAtLogin = new Switch;
    m_startAtLogin->setObjectName(u"startAtLogin"_s);
    auto* login = new SettingRow(u"Start at Login"_s, m_startAtLogin);
    login->setSecondLine(
        makeLabel(u"Without a window where the desktop has a tray. Auto mode goes on as it was left."_s,
                  TypeSize::small, TextTone::dim));
    card->addRow(login);
    connect(m_startAtLogin, &Switch::clicked, &m_actions, &SettingsActions::setStartAtLogin);
    connect(&m_actions, &SettingsActions::startAtLoginKnown, m_startAtLogin, &Switch::setChecked);
    layout()->addWidget(card);
    bindSetting(launch, m_parts.settings,
                {&SettingsStore::launchWithPhotoMechanic, &SettingsStore::setLaunchWithPhotoMechanic,
                 &SettingsStore::launchWithPhotoMechanicChanged});
    connect(launch, &Switch::clicked, this, &ApiTab::tellOfPhotoMechanic);
}

void ApiTab::tellOfPhotoMechanic(bool on) {
    m_parts.console.print(u"[SettingsView] Toggle changed from %1 to %2"_s.arg(boolName(!on), boolName(on)));
    Q_EMIT m_parts.events.photoMechanicSettingChanged();
    m_parts.console.print(u"[SettingsView] Posted PhotoMechanicSettingChanged notification"_s);
}

void ApiTab::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    m_actions.lookAtStartAtLogin(); // the desktop's own settings may have changed it
    showKey();                      // another process may have stored one meanwhile
    if (m_entry->isVisible() && window()->focusWidget() == nullptr) {
        m_field->setFocus(); // what a user without a key has come for
    }
}

void ApiTab::showKey() {
    const bool hasKey = !apiKey(m_parts.defaults).isEmpty();
    const KeyCheck::State verdict = m_parts.keyCheck.state();
    const bool isGood = hasKey && verdict != KeyCheck::State::refused;
    m_verdict->setVisible(hasKey && verdict != KeyCheck::State::unknown);
    m_state->setStatus(isGood ? StatusTone::good : StatusTone::missing,
                       hasKey ? u"Using Personal API Key"_s : u"No API Key Set"_s);
    if (hasKey) {
        m_field->clear(); // the secret is no longer needed here
    }
    // The focus would move to the next control, which would then take stray keys.
    const QWidget* focused = window()->focusWidget();
    if (hasKey && focused != nullptr && m_entry->isAncestorOf(focused)) {
        window()->setFocus();
    }
    m_entry->setVisible(!hasKey);
    if (!hasKey && focused == m_clear) {
        m_field->setFocus();
    }
    m_clear->setVisible(hasKey);
}

} // namespace ostrelle
