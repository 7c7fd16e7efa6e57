// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/toolkit/Icon.h"

#include <QList>
#include <QTabBar>

namespace ostrelle {

/// Tabs with a sign and a name each, the current one on a rounded ground. Keys and shortcuts are a tab bar's.
class SettingsTabBar : public QTabBar {
    Q_OBJECT

public:
    explicit SettingsTabBar(QWidget* parent = nullptr);

    /// An "&" in the name marks its shortcut.
    void addTab(IconName sign, const QString& name);

    /// From the last tab on to the first, and back.
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
