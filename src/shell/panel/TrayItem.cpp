// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panel/TrayItem.h"

#include "state/PanelProgress.h"

#include <QSystemTrayIcon>
#include <chrono>

namespace ostrelle {

using namespace Qt::StringLiterals;

TrayItem::TrayItem(ShellParts parts, PanelActions& actions, const Problems& problems)
    : m_parts(parts), m_actions(actions), m_problems(problems) {
    makeMenu();
    connect(&parts.settings, &SettingsStore::autoModeChanged, this, &TrayItem::update);
    for (const auto signal :
         {&StatusStore::isProcessingChanged, &StatusStore::queueChanged, &StatusStore::isPausedChanged,
          &StatusStore::ftpIsDownloadingChanged, &StatusStore::processedChanged, &StatusStore::failedChanged,
          &StatusStore::totalFilesChanged}) {
        connect(&parts.status, signal, this, &TrayItem::update);
    }
    connect(&problems, &Problems::changed, this, &TrayItem::update);
    update();
    // A desktop that starts brings its tray a little later than its programs.
    constexpr std::chrono::seconds period(2);
    m_look = parts.clock.every(period, [this, looks = 0]() mutable {
        if (++looks == 30) {
            m_look.reset();
        } else {
            lookForTray();
        }
    });
    lookForTray();
}

TrayItem::~TrayItem() = default;

bool TrayItem::isThere() {
    lookForTray();
    return m_icon && m_parts.hasTray();
}

void TrayItem::makeMenu() {
    m_menu.addAction(u"&Show Ostrelle Captions"_s, this, &TrayItem::showRequested);
    m_menu.addSeparator();
    m_autoMode = m_menu.addAction(u"&Auto Mode"_s);
    m_autoMode->setCheckable(true);
    connect(m_autoMode, &QAction::triggered, &m_actions, [this] {
        m_actions.switchAutoMode();
        m_autoMode->setChecked(m_parts.settings.autoMode()); // the switch may have been refused
    });
    m_pause = m_menu.addAction(u"&Pause"_s, &m_actions,
                               [this] { m_actions.setPaused(!m_parts.status.isPaused()); });
    m_stop = m_menu.addAction(u"S&top"_s, &m_actions, &PanelActions::stop);
    m_menu.addAction(u"&Caption Images…"_s, this, [this] {
        Q_EMIT showRequested();
        m_actions.selectImages();
    });
    m_menu.addSeparator();
    m_menu.addAction(u"&Quit"_s, this, &TrayItem::quitRequested);
}

void TrayItem::lookForTray() {
    if (m_icon || !m_parts.hasTray()) {
        return;
    }
    m_look.reset();
    m_icon = std::make_unique<QSystemTrayIcon>();
    m_icon->setContextMenu(&m_menu);
    connect(m_icon.get(), &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason reason) {
                if (reason == QSystemTrayIcon::Trigger) {
                    Q_EMIT clicked();
                }
            });
    m_icon->setIcon(trayIcon(m_state.kind));
    m_icon->setToolTip(u"Ostrelle Captions\n"_s + m_state.words);
    m_icon->show();
    Q_EMIT found();
}

void TrayItem::update() {
    m_autoMode->setChecked(m_parts.settings.autoMode());
    m_pause->setText(m_parts.status.isPaused() ? u"&Resume"_s : u"&Pause"_s);
    m_pause->setVisible(hasWork(m_parts.status));
    m_stop->setVisible(hasWork(m_parts.status));
    const TrayState state = trayState(m_parts.settings.autoMode(), m_parts.status, m_problems.list());
    if (m_icon && state.kind != m_state.kind) {
        m_icon->setIcon(trayIcon(state.kind));
    }
    if (m_icon && state.words != m_state.words) {
        m_icon->setToolTip(u"Ostrelle Captions\n"_s + state.words);
    }
    m_state = state;
}

} // namespace ostrelle
