// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/settings/StatisticsTab.h"

#include "shell/settings/SettingsActions.h"
#include "shell/toolkit/ActionButton.h"
#include "shell/toolkit/Card.h"
#include "shell/toolkit/CounterLabel.h"
#include "shell/toolkit/SettingRow.h"
#include "shell/toolkit/Switch.h"
#include "shell/toolkit/Theme.h"
#include "state/StatisticsTexts.h"

#include <QVBoxLayout>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

CounterLabel* makeCounter(const QString& objectName) {
    auto* counter = new CounterLabel;
    counter->setObjectName(objectName);
    counter->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    return counter;
}

CounterLabel* addFigure(Card& card, const QString& name, const QString& objectName) {
    CounterLabel* counter = makeCounter(objectName);
    card.addRow(new SettingRow(name, counter));
    return counter;
}

ActionButton* makeClear(const QString& words, const QString& objectName) {
    auto* button = new ActionButton(words, ActionKind::destroying);
    button->setObjectName(objectName);
    button->setText(words);
    return button;
}

/// "Cached Prompts: 3 (1 expired)".
QString textOf(const PromptCache::Counts& cache) {
    const QString text = u"Cached Prompts: %1"_s.arg(cache.cached);
    return cache.expired > 0 ? text + u" (%1 expired)"_s.arg(cache.expired) : text;
}

} // namespace

StatisticsTab::StatisticsTab(ShellParts parts, SettingsActions& actions, QWidget* parent)
    : QWidget(parent), m_parts(parts), m_actions(actions) {
    setObjectName(u"statisticsTab"_s);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(measure::cardSpacing);
    if (m_parts.analytics.isReportingBuiltIn()) {
        addReporting();
    }
    addUsage();
    addCosts();
    ActionButton* clear = makeClear(u"C&lear All Statistics"_s, u"clearStatistics"_s);
    connect(clear, &ActionButton::clicked, &m_actions, &SettingsActions::clearStatistics);
    layout->addWidget(clear, 0, Qt::AlignRight);
    addPromptCache();
    layout->addStretch(1);
    showFigures();
    observe();
}

/// First in the tab, so that whoever opens it has seen it.
void StatisticsTab::addReporting() {
    auto* toggle = new Switch;
    toggle->setObjectName(u"sendUsageFigures"_s);
    toggle->setChecked(isUsageSwitchOn(m_parts.defaults));
    connect(toggle, &Switch::toggled, this, [this](bool isOn) {
        setUsageSwitchOn(m_parts.defaults, isOn);
        m_parts.analytics.sendIfDue();
    });
    auto* row = new SettingRow(u"Send Usage Figures"_s, toggle);
    row->setSecondLine(makeLabel(
        u"Sent are: the numbers of launches, images, days since the installation and images per day, the "
        "moments of the installation and of sending, how long runs took, a random number that stands "
        "for this installation, and a fingerprint of the API key. No names, paths, captions, pictures or "
        "keys."_s,
        TypeSize::small, TextTone::dim));
    auto* card = new Card(u"Usage Figures"_s, this);
    card->addRow(row);
    layout()->addWidget(card);
}

void StatisticsTab::addUsage() {
    auto* card = new Card(u"Usage Statistics"_s, this);
    m_lifetimeImages = addFigure(*card, u"Lifetime Images Processed:"_s, u"lifetimeImages"_s);
    m_successRate = makeCounter(u"successRate"_s);
    m_successCounts = makeCounter(u"successCounts"_s);
    m_successCounts->setForegroundRole(QPalette::PlaceholderText);
    auto* success = new SettingRow(u"Success Rate:"_s, m_successRate);
    success->addControl(m_successCounts);
    card->addRow(success);
    m_averageTime = addFigure(*card, u"Average Time Per Image:"_s, u"averageTime"_s);
    layout()->addWidget(card);
}

void StatisticsTab::addCosts() {
    auto* card = new Card(u"Estimated API Costs"_s, this);
    m_todaysCost = addFigure(*card, u"Today's Cost:"_s, u"todaysCost"_s);
    m_totalCost = addFigure(*card, u"All-Time Total:"_s, u"totalCost"_s);
    layout()->addWidget(card);
}

void StatisticsTab::addPromptCache() {
    ActionButton* clear = makeClear(u"Clear &Prompt Cache"_s, u"clearPromptCache"_s);
    connect(clear, &ActionButton::clicked, &m_actions, &SettingsActions::clearPromptCache);
    m_promptCache = new SettingRow({}, clear);
    auto* card = new Card(u"Prompt Cache"_s, this);
    card->addRow(m_promptCache);
    layout()->addWidget(card);
}

void StatisticsTab::observe() {
    const StatusStore& status = m_parts.status;
    for (const auto changed :
         {&StatusStore::lifetimeImagesProcessedChanged, &StatusStore::totalProcessedAllTimeChanged,
          &StatusStore::totalFailedAllTimeChanged}) {
        connect(&status, changed, this, &StatisticsTab::showFigures);
    }
    connect(&status, &StatusStore::batchFinished, this, &StatisticsTab::showFigures);
    for (const auto changed : {&UsageTracker::todaysCostChanged, &UsageTracker::totalCostAllTimeChanged}) {
        connect(&m_parts.usage, changed, this, &StatisticsTab::showFigures);
    }
    connect(&m_actions, &SettingsActions::statisticsCleared, this, &StatisticsTab::showFigures);
    connect(&m_actions, &SettingsActions::promptCacheCleared, this, &StatisticsTab::showFigures);
}

void StatisticsTab::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (m_parts.analytics.isReportingBuiltIn()) {
        markUsageSwitchSeen(m_parts.defaults);
    }
    showFigures(); // cached prompts come and expire without a signal
}

void StatisticsTab::showFigures() {
    const StatisticsTexts texts = StatisticsTexts::of(m_parts.status, m_parts.usage);
    m_lifetimeImages->setText(texts.lifetimeImages);
    m_successRate->setText(texts.successRate);
    m_successCounts->setText(texts.successCounts);
    m_averageTime->setText(texts.averageTime);
    m_todaysCost->setText(texts.todaysCost);
    m_totalCost->setText(texts.totalCost);
    m_promptCache->setName(textOf(m_parts.prompts.cacheCounts()));
}

} // namespace ostrelle
