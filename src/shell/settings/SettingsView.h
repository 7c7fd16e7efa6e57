// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/panel/ShellParts.h"
#include "shell/settings/SettingsActions.h"
#include "shell/toolkit/Icon.h"

#include <QCoroTask>
#include <QWidget>

class QStackedWidget;

namespace ostrelle {

class SettingsTabBar;

/// The settings made once, in four tabs. There is no "apply": changes take effect at once. Escape closes it.
class SettingsView : public QWidget {
    Q_OBJECT

public:
    explicit SettingsView(ShellParts parts, QWidget* parent = nullptr);

    void showServerTab();

    /// Resumes when all tasks started here have ended.
    QCoro::Task<> finished() const { return m_actions.finished(); }

protected:
    void showEvent(QShowEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void addTabs();
    void addTab(IconName sign, const QString& name, QWidget* tab);
    void addShortcuts();
    QWidget* makeHead();
    QWidget* makeFoot();

    ShellParts m_parts;
    SettingsActions m_actions;
    SettingsTabBar* m_bar;
    QStackedWidget* m_pages;
    QWidget* m_serverTab = nullptr;
};

} // namespace ostrelle
