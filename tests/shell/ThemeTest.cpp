// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/toolkit/Theme.h"

#include "platform/DesktopColorScheme.h"
#include "shell/Scenes.h"
#include "shell/ScreenShots.h"
#include "shell/desktop/DesktopAppearance.h"

#include <gtest/gtest.h>

#include <QImage>

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
