// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panel/KeyEntry.h"

#include "product/ApiKey.h"
#include "product/WebPages.h"
#include "shell/toolkit/ActionButton.h"
#include "shell/toolkit/SecureField.h"
#include "shell/toolkit/StatusMark.h"
#include "shell/toolkit/Theme.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace ostrelle {

using namespace Qt::StringLiterals;
using State = KeyCheck::State;

namespace {

Alert keySavedNews(bool isSaved) {
    Alert alert;
    alert.title = isSaved ? u"API Key Saved"_s : u"API Key Not Saved"_s;
    alert.text = isSaved ? u"Your OpenAI API key has been saved successfully."_s
                         : u"Your OpenAI API key could not be saved and is used only until you quit Ostrelle "
                           "Captions. Check that your home folder can be written to and that the disk is not "
                           "full, then clear the key and enter it again."_s;
    alert.buttons = QStringList{u"OK"_s};
    alert.style = isSaved ? Alert::Style::informational : Alert::Style::warning;
    return alert;
}

StatusTone toneOf(State state) {
    switch (state) {
    case State::accepted:
        return StatusTone::good;
    case State::refused:
        return StatusTone::destroying;
    case State::unreachable:
        return StatusTone::missing;
    case State::unknown:
    case State::checking:
        break;
    }
    return StatusTone::plain;
}

QString wordsOf(const KeyCheck& check) {
    switch (check.state()) {
    case State::accepted:
        return u"OpenAI accepts this key."_s;
    case State::refused:
        return u"OpenAI refuses this key. Clear it and enter a valid one."_s;
    case State::unreachable:
        return u"OpenAI could not be asked about this key: "_s + check.reason();
    case State::checking:
        return u"Asking OpenAI about this key…"_s;
    case State::unknown:
        break;
    }
    return {};
}

} // namespace

QCoro::Task<> storeApiKey(ShellParts parts, QString entered) {
    const QString key = entered.trimmed();
    if (key.isEmpty()) {
        co_return;
    }
    parts.defaults.set(apiKeyName, key);
    parts.settings.setHasAPIKey(true);
    parts.analytics.updateUserProperties();
    parts.keyCheck.forget();
    const bool isSaved = co_await parts.defaults.saved(apiKeyName);
    const Alert outcome = keySavedNews(isSaved);
    co_await parts.alerts.show(outcome);
    if (apiKey(parts.defaults) == key) { // not cleared meanwhile
        parts.keyCheck.check();
    }
}

KeyEntry::KeyEntry(ShellParts parts, QWidget* parent)
    : QWidget(parent), m_field(new SecureField(u"apiKey"_s)) {
    m_field->setPlaceholderText(u"Enter your OpenAI API key..."_s);
    m_field->setAccessibleName(u"OpenAI API Key"_s);
    auto* save = new ActionButton(u"Save"_s, ActionKind::main);
    save->setObjectName(u"saveKey"_s);
    save->setText(u"Sa&ve"_s);
    auto* link = new ActionButton(u"Get an API Key"_s, ActionKind::link);
    link->setObjectName(u"getKey"_s);
    link->setText(u"Get an API &Key"_s);
    const auto enter = [this] { Q_EMIT entered(m_field->text()); };
    connect(m_field, &SecureField::returnPressed, this, enter);
    connect(save, &ActionButton::clicked, this, enter);
    connect(link, &ActionButton::clicked, this,
            [&workspace = parts.workspace] { workspace.openLink(keyPage()); });

    auto* lines = new QVBoxLayout(this);
    lines->setContentsMargins(0, 0, 0, 0);
    lines->setSpacing(measure::controlSpacing);
    auto* line = new QHBoxLayout;
    line->setSpacing(measure::controlSpacing);
    line->addWidget(m_field, 1);
    line->addWidget(save);
    lines->addLayout(line);
    auto* linkLine = new QHBoxLayout;
    constexpr int ring = 3; // a link keeps room for its focus ring; its words align with the rest
    linkLine->setContentsMargins(-ring, 0, 0, 0);
    linkLine->addWidget(link, 0, Qt::AlignLeft);
    lines->addLayout(linkLine);
}

KeyVerdictLine::KeyVerdictLine(KeyCheck& check, QWidget* parent)
    : QWidget(parent)
    , m_check(check)
    , m_words(new StatusMark)
    , m_again(new ActionButton(u"Check Again"_s, ActionKind::link)) {
    m_words->setObjectName(u"keyVerdict"_s);
    m_words->setWordWrap(true);
    m_again->setObjectName(u"checkKeyAgain"_s);
    auto* line = new QHBoxLayout(this);
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(measure::controlSpacing);
    line->addWidget(m_words, 1);
    line->addWidget(m_again);
    connect(m_again, &ActionButton::clicked, &check, &KeyCheck::check);
    connect(&check, &KeyCheck::changed, this, &KeyVerdictLine::showVerdict);
    showVerdict();
}

void KeyVerdictLine::showVerdict() {
    m_words->setStatus(toneOf(m_check.state()), wordsOf(m_check));
    m_again->setVisible(m_check.state() == State::unreachable);
    setVisible(m_check.state() != State::unknown);
}

} // namespace ostrelle
