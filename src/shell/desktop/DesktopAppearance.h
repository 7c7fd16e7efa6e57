// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QTimer>

class QApplication;

namespace ostrelle {

class DesktopColorScheme;

/// Shows the theme that the desktop prefers, and follows when it changes while windows are shown. Without a
/// preference, the platform's own palette decides.
class DesktopAppearance : public QObject {
    Q_OBJECT

public:
    /// Both must outlive it.
    DesktopAppearance(QApplication& application, const DesktopColorScheme& colorScheme);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void show();

    QApplication& m_application;
    const DesktopColorScheme& m_colorScheme;
    QTimer m_platformChange; // each window hears of it, more than once: one reaction is enough
};

} // namespace ostrelle
