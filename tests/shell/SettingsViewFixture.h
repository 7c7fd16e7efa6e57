// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/ShellFixture.h"
#include "shell/settings/SettingsView.h"
#include "support/Await.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QLabel>
#include <QTabBar>
#include <QTest>
#include <memory>

namespace ostrelle {

/// The settings window over fakes of the outside world, on a screen that nobody sees.
class SettingsViewTest : public testing::Test {
protected:
    SettingsViewTest() {
        QCoreApplication::setApplicationVersion(QStringLiteral("7.8.9"));
        show(std::make_unique<SettingsView>(world.parts));
    }
    ~SettingsViewTest() override { await(view->finished()); }

    void show(std::unique_ptr<SettingsView> shown) {
        view = std::move(shown);
        view->resize(550, 575);
        view->show();
        view->activateWindow();
        waitUntil([this] { return view->isActiveWindow(); }); // shortcuts are those of the active window
    }
    template <typename Widget = QWidget>
    Widget* find(const QString& name) {
        auto* widget = view->findChild<Widget*>(name);
        EXPECT_TRUE(widget) << name.toStdString();
        return widget;
    }
    void showTab(int index) { find<QTabBar>(QStringLiteral("settingsTabs"))->setCurrentIndex(index); }
    /// Presses a button that is in sight, and waits for what comes of it.
    void click(const QString& name) {
        auto* button = find<QAbstractButton>(name);
        ASSERT_TRUE(button->isVisible()) << name.toStdString();
        QTest::mouseClick(button, Qt::LeftButton, {}, button->rect().center());
        await(view->finished());
    }
    QString textOf(const QString& name) { return find<QLabel>(name)->text(); }
    QStringList titlesOfAlerts() const {
        QStringList titles;
        for (const Alert& alert : world.alerts.shown) {
            titles.append(alert.title);
        }
        return titles;
    }
    ShellWorld world;
    std::unique_ptr<SettingsView> view;
};

} // namespace ostrelle
