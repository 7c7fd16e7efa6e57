// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/tour/OnboardingPage.h"

#include "shell/panel/KeyEntry.h"
#include "shell/panel/PanelActions.h"
#include "shell/toolkit/ActionButton.h"
#include "shell/toolkit/CaptionStyleControl.h"
#include "shell/toolkit/ElidedLabel.h"
#include "shell/toolkit/Icon.h"
#include "shell/toolkit/Illustration.h"
#include "shell/toolkit/SecureField.h"
#include "shell/toolkit/StatusMark.h"
#include "shell/toolkit/Theme.h"

#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QVBoxLayout>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr int pictureHeight = 154;
constexpr int leastPictureHeight = 56; // large type takes room from the picture
constexpr int applicationIconSize = 124;
constexpr int wordsMargin = 12; // keeps the lines of a paragraph short

QWidget* makePicture(const QString& name) {
    if (name != applicationIconName) {
        Illustration* picture = Illustration::named(name);
        picture->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);
        picture->setMinimumHeight(leastPictureHeight);
        picture->setMaximumHeight(pictureHeight);
        return picture;
    }
    auto* picture = new QLabel;
    picture->setAlignment(Qt::AlignCenter);
    picture->setFixedHeight(pictureHeight);
    picture->setPixmap(applicationIcon().pixmap(QSize(applicationIconSize, applicationIconSize),
                                                picture->devicePixelRatioF()));
    return picture;
}

QLabel* makeCentred(const QString& words, TypeSize size, TextTone tone) {
    QLabel* label = makeLabel(words, size, tone);
    label->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    const int margin = size == TypeSize::title ? 0 : wordsMargin;
    label->setContentsMargins(margin, 0, margin, 0);
    return label;
}

} // namespace

OnboardingPage::OnboardingPage(const OnboardingStep& step, ShellParts parts, PanelActions& actions,
                               QWidget* parent)
    : QWidget(parent), m_parts(parts), m_actions(actions), m_layout(new QVBoxLayout(this)) {
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->setSpacing(0);
    m_layout->addWidget(makePicture(step.icon), 100); // grows up to its own size first
    m_layout->addSpacing(22);
    addWords(step);
    addOffer(step.offer);
    m_layout->addStretch(1);
}

void OnboardingPage::addWords(const OnboardingStep& step) {
    m_layout->addWidget(makeCentred(step.title, TypeSize::title, TextTone::plain));
    m_layout->addSpacing(12);
    m_layout->addWidget(makeCentred(step.description, TypeSize::text, TextTone::dim));
    if (step.description2) {
        m_layout->addSpacing(8);
        m_layout->addWidget(makeCentred(*step.description2, TypeSize::text, TextTone::plain));
    }
}

void OnboardingPage::addOffer(OnboardingOffer offer) {
    m_layout->addSpacing(18);
    switch (offer) {
    case OnboardingOffer::watchFolder:
        return offerFolder();
    case OnboardingOffer::apiKey:
        return offerKey();
    case OnboardingOffer::codeReplacements:
        return offerRoster();
    case OnboardingOffer::captionStyle:
        return offerStyle();
    case OnboardingOffer::helpGuide:
        return offerGuide();
    case OnboardingOffer::none:
        return;
    }
}

void OnboardingPage::offerFolder() {
    addChoice(u"onboardingWatchFolder"_s, u"Select Watch Folder"_s, &SettingsStore::ingestFolder,
              &SettingsStore::ingestFolderChanged, &PanelActions::chooseWatchFolder);
}

void OnboardingPage::offerKey() {
    constexpr int width = 380;
    auto* column = new QWidget;
    column->setFixedWidth(widthForType(width));
    auto* lines = new QVBoxLayout(column);
    lines->setContentsMargins(0, 0, 0, 0);
    lines->setSpacing(measure::controlSpacing);
    auto* entry = new KeyEntry(m_parts);
    connect(entry, &KeyEntry::entered, &m_actions, &PanelActions::saveKey);
    lines->addWidget(entry);
    auto* stored = new StatusMark(StatusTone::good, u"Using Personal API Key"_s);
    stored->setObjectName(u"onboardingKeyStored"_s);
    lines->addWidget(stored);
    lines->addWidget(new KeyVerdictLine(m_parts.keyCheck));
    m_layout->addWidget(column, 0, Qt::AlignHCenter);
    const auto show = [entry, stored, parts = m_parts] {
        const bool hasKey = parts.settings.hasAPIKey();
        const bool isRefused = parts.keyCheck.state() == KeyCheck::State::refused;
        if (hasKey && !isRefused) {
            entry->field()->clear(); // the secret is no longer needed here
        }
        stored->setVisible(hasKey && !isRefused);
        if (hasKey && !isRefused && entry->field()->hasFocus()) {
            entry->window()->setFocus(); // or a button would take the next key
        }
        entry->setVisible(!hasKey || isRefused);
    };
    show();
    connect(&m_parts.settings, &SettingsStore::hasAPIKeyChanged, entry, show);
    connect(&m_parts.keyCheck, &KeyCheck::changed, entry, show);
}

void OnboardingPage::offerRoster() {
    ElidedLabel* chosen =
        addChoice(u"onboardingCodeReplacements"_s, u"Select Code Replacements File"_s,
                  &SettingsStore::codeReplacementsFile, &SettingsStore::codeReplacementsFileChanged,
                  &PanelActions::chooseCodeReplacements);
    auto* problem = new StatusMark;
    problem->setObjectName(u"onboardingRosterProblem"_s);
    problem->setFont(typeFont(TypeSize::small));
    problem->setWordWrap(true);
    m_layout->addSpacing(4);
    m_layout->addWidget(problem);
    const auto showFound = [this, chosen, problem] {
        const RosterWatch& watch = m_actions.roster();
        if (!m_parts.settings.codeReplacementsFile()) {
            chosen->setText(watch.isUsed() ? rosterOfFolderUsed() : QString());
        }
        problem->setStatus(StatusTone::missing, watch.problem());
        problem->setVisible(!watch.problem().isEmpty());
    };
    showFound();
    connect(&m_actions.roster(), &RosterWatch::useChanged, chosen, showFound);
}

ElidedLabel* OnboardingPage::addChoice(const QString& name, const QString& words,
                                       std::optional<QString> (SettingsStore::*path)() const,
                                       void (SettingsStore::*changed)(), void (PanelActions::*choose)()) {
    auto* button = new ActionButton(u"Choose…"_s);
    button->setText(u"&Choose…"_s);
    button->setObjectName(name + u"Choose"_s);
    button->setAccessibleDescription(words);
    button->setFocusPolicy(Qt::TabFocus);
    connect(button, &ActionButton::clicked, &m_actions, choose);
    m_layout->addWidget(button, 0, Qt::AlignHCenter);

    auto* chosen = new ElidedLabel;
    chosen->setObjectName(name);
    chosen->setAlignment(Qt::AlignCenter);
    chosen->setContentsMargins(wordsMargin, 0, wordsMargin, 0);
    m_layout->addSpacing(8);
    m_layout->addWidget(chosen);
    const auto show = [=, &settings = m_parts.settings] {
        const QString value = (settings.*path)().value_or(QString());
        chosen->setText(QFileInfo(value).fileName());
        chosen->setToolTip(QDir::toNativeSeparators(value));
    };
    show();
    connect(&m_parts.settings, changed, chosen, show);
    return chosen;
}

void OnboardingPage::offerStyle() {
    m_layout->addWidget(new CaptionStyleControl(m_parts.settings, u"onboardingStyle"_s), 0, Qt::AlignHCenter);
}

void OnboardingPage::offerGuide() {
    auto* link = new ActionButton(u"View the Help Guide"_s, ActionKind::link);
    link->setObjectName(u"viewHelpGuide"_s);
    link->setFocusPolicy(Qt::TabFocus);
    connect(link, &ActionButton::clicked, &m_parts.events, &AppEvents::showHelpWindow);
    m_layout->addWidget(link, 0, Qt::AlignHCenter);
}

} // namespace ostrelle
