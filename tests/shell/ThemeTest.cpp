// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/toolkit/Theme.h"

#include "platform/DesktopColorScheme.h"
#include "shell/Scenes.h"
#include "shell/ScreenShots.h"
#include "shell/desktop/DesktopAppearance.h"

#include <gtest/gtest.h>

#include <QImage>
#include <algorithm>
#include <cmath>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// Each test starts and ends with the light theme.
class ThemeTest : public testing::Test {
protected:
    ThemeTest() { QApplication::setCursorFlashTime(0); } // no blinking cursor in the pictures
    ~ThemeTest() override {
        QApplication::setCursorFlashTime(m_flashTime);
        applyTheme(*qApp, ThemeChoice::light);
    }

    static void apply(ThemeChoice choice) { applyTheme(*qApp, choice); }

    static QImage picture(QWidget& window) { return screenshot(window).toImage(); }

private:
    int m_flashTime = QApplication::cursorFlashTime();
};

TEST_F(ThemeTest, AWindowThatIsShownChangesToWhatItWouldHaveBeenFromTheStart) {
    for (const Scene& scene : scenes()) {
        SCOPED_TRACE(scene.name.toStdString());
        QImage light;
        QImage changed;
        {
            GameWorld world;
            QWidget& window = scene.in(world);
            light = picture(window);
            apply(ThemeChoice::dark);
            changed = picture(window);
        }
        GameWorld world;
        QWidget& window = scene.in(world);
        const QImage dark = picture(window);
        EXPECT_TRUE(changed == dark);
        EXPECT_FALSE(light == dark);
        apply(ThemeChoice::light);
        EXPECT_TRUE(picture(window) == light);
    }
}

/// By the Web Content Accessibility Guidelines 2.1: 1.4.3, 1.4.6 and 1.4.11.
TEST_F(ThemeTest, HighContrastStandsOut) {
    const auto luminance = [](const QColor& color) {
        const auto linear = [](double part) {
            return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
               0.0722 * linear(color.blueF());
    };
    const auto ratio = [&](const QColor& one, const QColor& other) {
        const auto [less, more] = std::minmax({luminance(one), luminance(other)});
        return (more + 0.05) / (less + 0.05);
    };
    for (const Theme& theme : {Theme::lightHighContrast(), Theme::darkHighContrast()}) {
        for (const QColor& behind : {theme.card, theme.ground, theme.field}) {
            for (const QColor& outline : {theme.line, theme.track, theme.accent}) {
                EXPECT_GE(ratio(outline, behind), 3) << outline.name().toStdString();
            }
            for (const QColor& words :
                 {theme.text, theme.dim, theme.accent, theme.missing, theme.good, theme.destroying}) {
                EXPECT_GE(ratio(words, behind), words == theme.text || words == theme.dim ? 7 : 4.5)
                    << words.name().toStdString();
            }
        }
        EXPECT_GE(ratio(theme.onAccent, theme.accent), 4.5);
    }
}

TEST_F(ThemeTest, WhatWasOutOfSightChangesToo) {
    // When shown, a window that was hidden focuses another widget than a new one does.
    const auto pictureWithoutFocus = [](QWidget& window) {
        picture(window);
        if (QWidget* focus = window.focusWidget()) {
            focus->clearFocus();
        }
        return picture(window);
    };
    for (int tab = 0; tab < 4; ++tab) {
        SCOPED_TRACE(tab);
        apply(ThemeChoice::light);
        QImage changed;
        {
            GameWorld world;
            world.showSettings((tab + 1) % 4);
            QWidget& window = *ProgramWorld::window(GameWorld::settingsWindow);
            picture(window);
            window.hide();
            apply(ThemeChoice::dark);
            world.showSettings(tab);
            changed = pictureWithoutFocus(window);
        }
        GameWorld world;
        world.showSettings(tab);
        EXPECT_TRUE(changed == pictureWithoutFocus(*ProgramWorld::window(GameWorld::settingsWindow)));
    }
}

QColor ground() {
    return QApplication::palette().color(QPalette::Window);
}

TEST_F(ThemeTest, WithoutAPreferenceThePlatformsOwnPaletteCounts) {
    apply(ThemeChoice::dark);
    ASSERT_EQ(ground(), Theme::dark().ground);
    apply(ThemeChoice::desktop); // the off-screen platform is light
    EXPECT_EQ(ground(), Theme::light().ground);
}

TEST_F(ThemeTest, APlatformThatChangesIsFollowed) {
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"); // the user's own may have a preference
    DesktopColorScheme none;
    waitUntil([&none] { return none.isSettled(); });
    QWidget window;
    DesktopAppearance appearance(*qApp, none);
    apply(ThemeChoice::dark); // as if the platform had been dark
    QEvent event(QEvent::ThemeChange);
    QApplication::sendEvent(&window, &event);
    waitUntil([] { return ground() == Theme::light().ground; });
}

} // namespace

} // namespace ostrelle
