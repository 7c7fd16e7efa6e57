// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/toolkit/Theme.h"

#include "platform/DesktopColorScheme.h"
#include "shell/ProgramWorld.h"
#include "shell/ScreenShots.h"
#include "shell/ToolkitGallery.h"
#include "shell/desktop/DesktopAlerts.h"
#include "shell/desktop/DesktopAppearance.h"
#include "shell/toolkit/ColorSwatchPicker.h"
#include "shell/toolkit/InfoButton.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QLabel>
#include <QMessageBox>
#include <QTabBar>
#include <QTest>
#include <functional>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// Each test begins light and leaves it so.
class ThemeTest : public testing::Test {
protected:
    ThemeTest() { QApplication::setCursorFlashTime(0); } // no picture depends on when it is taken
    ~ThemeTest() override {
        QApplication::setCursorFlashTime(m_flashTime);
        applyTheme(*qApp, ThemeChoice::light);
    }

    static void apply(ThemeChoice choice) { applyTheme(*qApp, choice); }

    QImage picture(QWidget& window) const {
        const QString path = m_folder.filePath(u"window.png"_s);
        EXPECT_TRUE(saveScreenshot(window, path));
        return QImage(path);
    }

private:
    QTemporaryDir m_folder;
    int m_flashTime = QApplication::cursorFlashTime();
};

/// Where two pictures of the same size differ.
QRect difference(const QImage& one, const QImage& other) {
    QRect area;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            if (one.pixel(x, y) != other.pixel(x, y)) {
                area |= QRect(x, y, 1, 1);
            }
        }
    }
    return area;
}

void expectSame(const QImage& changed, const QImage& made) {
    ASSERT_EQ(changed.size(), made.size());
    const QRect area = difference(changed, made);
    EXPECT_TRUE(area.isEmpty()) << area.x() << ',' << area.y() << ' ' << area.width() << 'x' << area.height();
}

/// A window of the program, brought up in a state that shows as many of its parts as it can.
struct Scene {
    const char* name;
    std::function<QWidget*(ProgramWorld& world)> open;
};

void PrintTo(const Scene& scene, std::ostream* out) {
    *out << scene.name;
}

QWidget* openPanel(ProgramWorld& world) {
    world.settings.setUseTeamIdentification(true);
    world.settings.setTeam1Name(u"Kentucky"_s);
    world.settings.setTeam1Color(u"Blue"_s);
    return world.delegate.mainWindow();
}

QWidget* openRun(ProgramWorld& world) {
    world.settings.setHasAPIKey(true);
    world.settings.setIngestFolder(u"/home/desk/game"_s);
    world.settings.setAutoMode(true);
    world.status.setNextScanCountdown(7);
    world.status.setIsProcessing(true);
    world.status.setTotalFiles(24);
    world.status.setProcessed(16);
    return openPanel(world);
}

QWidget* openInfo(ProgramWorld& world) {
    QWidget* panel = openPanel(world);
    panel->findChild<InfoButton*>(u"sportInfo"_s)->openPopover();
    return panel;
}

QWidget* openSwatches(ProgramWorld& world) {
    QWidget* panel = openPanel(world);
    panel->findChild<ColorSwatchPicker*>(u"team1Color"_s)->click();
    return panel;
}

std::function<QWidget*(ProgramWorld&)> openSettings(int tab) {
    return [tab](ProgramWorld& world) {
        world.settings.setHasAPIKey(tab != 0);
        world.settings.setFtpHost(u"ftp.gameday.example"_s);
        world.settings.setFtpPassword(u"12345678"_s);
        world.settings.setFtpConnectionStatus(u"success"_s);
        world.settings.setDefaultRightsFallback(u"AP Photo/John Smith"_s);
        Q_EMIT world.events.showSettingsWindow();
        QWidget* window = ProgramWorld::window(u"Settings"_s);
        window->findChild<QTabBar*>()->setCurrentIndex(tab);
        return window;
    };
}

std::function<QWidget*(ProgramWorld&)> openTour(int page) {
    return [page](ProgramWorld& world) {
        Q_EMIT world.events.showOnboardingWindow();
        QWidget* tour = ProgramWorld::window(u"Welcome to Ostrelle Captions"_s);
        for (int turned = 0; turned < page; ++turned) {
            QTest::keyClick(tour, Qt::Key_Right);
        }
        return tour;
    };
}

QWidget* openHelp(ProgramWorld& world) {
    Q_EMIT world.events.showHelpWindow();
    return ProgramWorld::window(u"Help - IPTC Preset Guide"_s);
}

QWidget* openAbout(ProgramWorld& world) {
    Q_EMIT world.events.showAboutWindow();
    return ProgramWorld::window(u"About Ostrelle Captions"_s);
}

class WindowThemeTest : public ThemeTest, public testing::WithParamInterface<Scene> {};

TEST_P(WindowThemeTest, AWindowThatIsShownChangesToWhatItWouldHaveBeenFromTheStart) {
    QImage light;
    QImage changed;
    {
        ProgramWorld world;
        world.start();
        QWidget& window = *GetParam().open(world);
        light = picture(window);
        apply(ThemeChoice::dark);
        changed = picture(window);
    }
    ProgramWorld world;
    world.start();
    QWidget& window = *GetParam().open(world);
    const QImage dark = picture(window);
    expectSame(changed, dark);
    EXPECT_NE(light, dark);
    apply(ThemeChoice::light);
    expectSame(picture(window), light);
}

INSTANTIATE_TEST_SUITE_P(
    , WindowThemeTest,
    testing::Values(Scene{"Panel", openPanel}, Scene{"PanelInARun", openRun},
                    Scene{"InfoOverThePanel", openInfo}, Scene{"SwatchesOverThePanel", openSwatches},
                    Scene{"SettingsOfTheModel", openSettings(0)},
                    Scene{"SettingsOfTheServer", openSettings(1)},
                    Scene{"SettingsOfCaptions", openSettings(2)}, Scene{"Statistics", openSettings(3)},
                    Scene{"Tour1", openTour(0)}, Scene{"Tour2", openTour(1)}, Scene{"Tour3", openTour(2)},
                    Scene{"Tour4", openTour(3)}, Scene{"Tour5", openTour(4)}, Scene{"Tour6", openTour(5)},
                    Scene{"Tour7", openTour(6)}, Scene{"Help", openHelp}, Scene{"About", openAbout}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(ThemeTest, WhatWasOutOfSightChangesToo) {
    // A window that was hidden gives the focus to another widget than a new one.
    const auto pictureWithoutFocus = [this](QWidget& window) {
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
            ProgramWorld world;
            world.start();
            QWidget& window = *openSettings(tab)(world);
            auto* tabs = window.findChild<QTabBar*>();
            tabs->setCurrentIndex((tab + 1) % 4);
            picture(window);
            window.hide();
            apply(ThemeChoice::dark);
            tabs->setCurrentIndex(tab);
            changed = pictureWithoutFocus(window);
        }
        ProgramWorld world;
        world.start();
        expectSame(changed, pictureWithoutFocus(*openSettings(tab)(world)));
    }
}

TEST_F(ThemeTest, AnAlertThatIsShownChangesToo) {
    const auto box = [] { return qobject_cast<QMessageBox*>(QApplication::activeModalWidget()); };
    for (const auto style : {Alert::Style::warning, Alert::Style::informational}) {
        apply(ThemeChoice::light);
        QImage pictures[2];
        for (QImage& image : pictures) {
            DesktopAlerts alerts;
            auto answer =
                alerts.show({.title = u"Title"_s, .text = u"Text"_s, .buttons = {u"OK"_s}, .style = style});
            waitUntil([&] { return box() != nullptr; });
            apply(ThemeChoice::dark); // the second one is dark from the start
            image = picture(*box());
            box()->reject();
            await(std::move(answer));
        }
        expectSame(pictures[0], pictures[1]);
    }
}

/// The gallery without its signs, which it has as pixmaps.
class Gallery : public ToolkitGallery {
public:
    Gallery() {
        const auto labels = findChildren<QLabel*>();
        for (QLabel* label : labels) {
            if (!label->pixmap().isNull()) {
                label->clear();
            }
        }
    }
};

TEST_F(ThemeTest, EveryControlChangesToWhatItWouldHaveBeenFromTheStart) {
    Gallery gallery;
    const QImage light = picture(gallery);
    apply(ThemeChoice::dark);
    const QImage changed = picture(gallery);
    gallery.hide();
    Gallery made;
    expectSame(changed, picture(made));
    EXPECT_NE(light, changed);
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
