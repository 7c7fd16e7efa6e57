// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/toolkit/Icon.h"

#include <QList>
#include <QTabBar>

namespace ostrelle {

/// Tabs with an icon and a name, the current one on a rounded ground. Keys and shortcuts are those of a tab
/// bar.
class SettingsTabBar : public QTabBar {
    Q_OBJECT

public:
    explicit SettingsTabBar(QWidget* parent = nullptr);

    /// An "&" in the name marks its shortcut.
    void addTab(IconName sign, const QString& name);

    /// Goes from the last tab to the first, too.
    void selectNext();
    void selectPrevious();

protected:
    QSize tabSizeHint(int index) const override;
    QSize minimumTabSizeHint(int index) const override;
    void paintEvent(QPaintEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void paintTab(QPainter& painter, int index) const;

    QList<IconName> m_signs;
};

} // namespace ostrelle
