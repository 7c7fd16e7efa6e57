// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/panel/PanelActions.h"
#include "shell/panel/ShellParts.h"

#include <QCoroTask>
#include <QWidget>

namespace ostrelle {

class DropNotice;
class SavingNotice;

/// The main panel. The settings that change from game to game scroll at the top; the photographer's actions
/// and the current activity stay in sight at the bottom. Folders, images and rosters can be dropped on it.
class MenuContentView : public QWidget {
    Q_OBJECT

public:
    explicit MenuContentView(ShellParts parts, QWidget* parent = nullptr);

    PanelActions& actions() { return m_actions; }
    const Problems& problems() const { return m_problems; }

    /// Resumes when all tasks started here have ended.
    QCoro::Task<> finished() const { return m_actions.finished(); }

protected:
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    QWidget* makeScroll();
    QWidget* makeSettings();
    QWidget* makeKeyNotice();
    QWidget* makeManifestNotice();
    QWidget* makeFoot();
    QWidget* makeLinks();

    ShellParts m_parts;
    PanelActions m_actions;
    Problems m_problems;
    SavingNotice* m_savingNotice = nullptr;
    DropNotice* m_dropNotice;
};

} // namespace ostrelle
