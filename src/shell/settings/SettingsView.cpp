// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/settings/SettingsView.h"

#include "shell/settings/ApiTab.h"
#include "shell/settings/CaptioningTab.h"
#include "shell/settings/ServerTab.h"
#include "shell/settings/SettingsTabBar.h"
#include "shell/settings/StatisticsTab.h"
#include "shell/toolkit/AccessibleView.h"
#include "shell/toolkit/ActionButton.h"
#include "shell/toolkit/PanelFoot.h"
#include "shell/toolkit/Theme.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QScrollArea>
#include <QShortcut>
#include <QStackedWidget>
#include <QVBoxLayout>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr int sideMargin = 18;

/// The background of the tabs: that of a card, with a line below.
class Head : public QWidget {
protected:
    void paintEvent(QPaintEvent*) override {
        const Theme& theme = Theme::of(*this);
        QPainter painter(this);
        painter.fillRect(rect(), theme.card);
        painter.fillRect(0, height() - 1, width(), 1, theme.line);
    }
};

} // namespace

SettingsView::SettingsView(ShellParts parts, QWidget* parent)
    : QWidget(parent)
    , m_parts(parts)
    , m_actions(parts)
    , m_bar(new SettingsTabBar)
    , m_pages(new QStackedWidget) {
    setObjectName(u"settings"_s);
    setAccessibleRole(*this, QAccessible::Window);
    setFocusPolicy(Qt::ClickFocus);
    m_bar->setObjectName(u"settingsTabs"_s);
    m_bar->setAccessibleName(u"Settings"_s);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(makeHead());
    layout->addWidget(m_pages, 1);
    addTabs(); // before the foot, which follows in tab order
    layout->addWidget(makeFoot());
    addShortcuts();
}

void SettingsView::showServerTab() {
    constexpr int serverTab = 1;
    m_bar->setCurrentIndex(serverTab);
    m_serverTab->setFocus();
}

QWidget* SettingsView::makeHead() {
    auto* head = new Head;
    auto* line = new QHBoxLayout(head);
    line->setContentsMargins(measure::windowMargin, 9, measure::windowMargin, 10);
    line->addStretch();
    line->addWidget(m_bar);
    line->addStretch();
    return head;
}

void SettingsView::addTabs() {
    addTab(IconName::key, u"&API"_s, new ApiTab(m_parts, m_actions));
    m_serverTab = new ServerTab(m_parts, m_actions);
    addTab(IconName::server, u"&FTP"_s, m_serverTab);
    addTab(IconName::bubble, u"&Captioning"_s, new CaptioningTab(m_parts.settings));
    addTab(IconName::chart, u"&Statistics"_s, new StatisticsTab(m_parts, m_actions));
    connect(m_bar, &QTabBar::currentChanged, m_pages, &QStackedWidget::setCurrentIndex);
}

void SettingsView::addTab(IconName sign, const QString& name, QWidget* tab) {
    tab->layout()->setContentsMargins(sideMargin, 14, sideMargin, 14);
    auto* scroll = new QScrollArea;
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setFocusPolicy(Qt::NoFocus);
    tab->setMaximumWidth(widthForType(measure::widestColumn));
    scroll->setAlignment(Qt::AlignHCenter);
    scroll->setWidget(tab);
    m_pages->addWidget(scroll);
    m_bar->addTab(sign, name);
}

void SettingsView::addShortcuts() {
    const auto add = [this](std::initializer_list<QKeyCombination> keys, void (SettingsTabBar::*select)()) {
        for (const QKeyCombination key : keys) {
            connect(new QShortcut(key, this), &QShortcut::activated, m_bar, select);
        }
    };
    add({Qt::CTRL | Qt::Key_PageDown, Qt::CTRL | Qt::Key_Tab}, &SettingsTabBar::selectNext);
    add({Qt::CTRL | Qt::Key_PageUp, Qt::CTRL | Qt::SHIFT | Qt::Key_Tab}, &SettingsTabBar::selectPrevious);
}

QWidget* SettingsView::makeFoot() {
    QLabel* version = makeLabel(u"Ostrelle Captions · Version "_s + QCoreApplication::applicationVersion(),
                                TypeSize::small, TextTone::dim);
    version->setObjectName(u"settingsVersion"_s);
    auto* onboarding = new ActionButton(u"Show Onboarding Again"_s);
    onboarding->setObjectName(u"showOnboarding"_s);
    onboarding->setText(u"Show &Onboarding Again"_s);
    connect(onboarding, &ActionButton::clicked, &m_parts.events, &AppEvents::showOnboardingWindow);

    auto* row = new QWidget;
    auto* line = new QHBoxLayout(row);
    constexpr int side = sideMargin - measure::windowMargin; // the foot has the latter, the cards the former
    line->setContentsMargins(side, 2, side, 2);
    line->addWidget(version, 1);
    line->addWidget(onboarding);
    auto* foot = new PanelFoot;
    foot->addRow(row);
    return foot;
}

void SettingsView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (window()->focusWidget() == nullptr) {
        setFocus(); // else the first control would start with the ring and take stray keys
    }
}

void SettingsView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        close();
        return;
    }
    QWidget::keyPressEvent(event);
}

} // namespace ostrelle
