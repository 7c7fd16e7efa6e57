// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/desktop/DesktopAppearance.h"

#include "platform/DesktopColorScheme.h"
#include "shell/toolkit/Theme.h"

#include <QApplication>
#include <QEvent>

namespace ostrelle {

namespace {

ThemeChoice themeChoice(ColorScheme preference) {
    switch (preference) {
    case ColorScheme::dark:
        return ThemeChoice::dark;
    case ColorScheme::light:
        return ThemeChoice::light;
    case ColorScheme::noPreference:
        break;
    }
    return ThemeChoice::desktop;
}

} // namespace

DesktopAppearance::DesktopAppearance(QApplication& application, const DesktopColorScheme& colorScheme)
    : m_application(application), m_colorScheme(colorScheme) {
    show();
    m_platformChange.setSingleShot(true);
    connect(&m_platformChange, &QTimer::timeout, this, &DesktopAppearance::show);
    connect(&m_colorScheme, &DesktopColorScheme::changed, this, &DesktopAppearance::show);
    m_application.installEventFilter(this);
}

bool DesktopAppearance::eventFilter(QObject*, QEvent* event) {
    // Unlike a palette change, this one is never our own.
    if (event->type() == QEvent::ThemeChange && m_colorScheme.preference() == ColorScheme::noPreference) {
        m_platformChange.start(0);
    }
    return false;
}

void DesktopAppearance::show() {
    applyTheme(m_application, themeChoice(m_colorScheme.preference()),
               m_colorScheme.wantsHighContrast() ? Contrast::high : Contrast::usual);
}

} // namespace ostrelle
