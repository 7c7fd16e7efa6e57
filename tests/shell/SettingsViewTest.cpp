// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/SettingsViewFixture.h"
#include "shell/toolkit/InfoButton.h"
#include "shell/toolkit/Picker.h"
#include "shell/toolkit/Popover.h"
#include "shell/toolkit/SettingRow.h"
#include "shell/toolkit/StatusMark.h"
#include "support/FileFacts.h"

#include <QAction>
#include <QDir>
#include <QFileInfo>
#include <QLineEdit>
#include <QLocale>
#include <QScopeGuard>
#include <QSignalSpy>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString keyName = u"OPENAI_API_KEY"_s;

} // namespace

TEST_F(SettingsViewTest, AKeyIsSavedAndAfterAYesCleared) {
    EXPECT_EQ(textOf(u"keyState"_s), u"No API Key Set"_s);
    auto* field = find<QLineEdit>(u"apiKey"_s);
    EXPECT_EQ(field->echoMode(), QLineEdit::Password);
    field->setText(u" \n"_s);
    click(u"saveKey"_s);
    EXPECT_TRUE(world.alerts.shown.isEmpty());
    field->setText(u" sk-pasted 2\u00a0\n"_s);
    click(u"saveKey"_s);
    EXPECT_EQ(world.defaults.get<QString>(keyName), u"sk-pasted 2"_s);
    EXPECT_EQ(world.alerts.shown.last().style, Alert::Style::informational);
    EXPECT_EQ(world.alerts.shown.last().buttons, QStringList(u"OK"_s));
    EXPECT_EQ(textOf(u"keyState"_s), u"Using Personal API Key"_s);
    EXPECT_FALSE(field->isVisible());
    EXPECT_TRUE(field->text().isEmpty());

    world.alerts.answer = 1;
    click(u"clearKey"_s);
    EXPECT_EQ(world.defaults.get<QString>(keyName), u"sk-pasted 2"_s);
    EXPECT_EQ(world.alerts.shown.last().style, Alert::Style::warning);
    EXPECT_EQ(world.alerts.shown.last().buttons, QStringList({u"Clear"_s, u"Cancel"_s}));
    world.alerts.answer = 0;
    click(u"clearKey"_s);
    EXPECT_FALSE(world.defaults.exists(keyName));
    EXPECT_TRUE(field->isVisible());
    EXPECT_EQ(world.alerts.titles(),
              QStringList({u"API Key Saved"_s, u"Clear API Key?"_s, u"Clear API Key?"_s}));
}

TEST_F(SettingsViewTest, TheFocusIsWhereAKeyIsEnteredAndElseOnNothingThatActs) {
    EXPECT_EQ(view->focusWidget(), find(u"apiKey"_s));
    QTest::keyClicks(view->focusWidget(), u"sk-typed"_s);
    QTest::keyClick(view->focusWidget(), Qt::Key_Return);
    await(view->finished());
    EXPECT_EQ(world.defaults.get<QString>(keyName), u"sk-typed"_s);
    EXPECT_EQ(view->focusWidget(), view.get());
    click(u"clearKey"_s);
    EXPECT_EQ(view->focusWidget(), find(u"apiKey"_s));
}

TEST_F(SettingsViewTest, AKeyThatTheDiskDidNotTakeIsNotSaidToBeSaved) {
    world.defaults.isDiskFull = true;
    find<QLineEdit>(u"apiKey"_s)->setText(u"sk-typed"_s);
    click(u"saveKey"_s);
    click(u"clearKey"_s);
    EXPECT_EQ(world.alerts.titles(),
              QStringList({u"API Key Not Saved"_s, u"Clear API Key?"_s, u"API Key Not Removed"_s}));
}

TEST_F(SettingsViewTest, AKeyThatAnotherProcessStoredIsSeenWhenTheWindowIsShown) {
    view->hide();
    world.defaults.set(keyName, u"sk-other"_s);
    view->show();
    EXPECT_EQ(textOf(u"keyState"_s), u"Using Personal API Key"_s);
}

TEST_F(SettingsViewTest, WhatIsSaidOfTheKeyStandsBelowItAndGoesWithIt) {
    world.defaults.set(keyName, u"sk-\nwrong"_s);
    world.settings.setHasAPIKey(true);
    const auto* state = find<StatusMark>(u"keyState"_s);
    EXPECT_EQ(state->tone(), StatusTone::good);
    world.program.keyCheck.check();
    await(world.program.keyCheck.finished());
    EXPECT_TRUE(isShown(u"checkKeyAgain"_s)) << "it could not be asked";
    EXPECT_EQ(state->tone(), StatusTone::good);
    world.alerts.answer = 0;
    click(u"clearKey"_s);
    EXPECT_FALSE(isShown(u"keyVerdict"_s));
}

TEST_F(SettingsViewTest, LinksAndTheFootLeadElsewhere) {
    const QSignalSpy onboarding(&world.events, &AppEvents::showOnboardingWindow);
    click(u"getKey"_s);
    click(u"showOnboarding"_s);
    EXPECT_EQ(world.workspace.links, QList<QUrl>{QUrl(u"https://platform.openai.com/api-keys"_s)});
    EXPECT_EQ(onboarding.size(), 1);
    QCoreApplication::setApplicationVersion(u"7.8.9"_s);
    EXPECT_TRUE(
        SettingsView(world.parts).findChild<QLabel*>(u"settingsVersion"_s)->text().contains(u"7.8.9"_s));
}

TEST_F(SettingsViewTest, TheLaunchSettingIsAnnouncedOnceItIsStored) {
    QStringList seen;
    QObject::connect(&world.events, &AppEvents::photoMechanicSettingChanged, view.get(), [&] {
        seen.append(world.settings.launchWithPhotoMechanic() ? u"on"_s : u"off"_s);
        seen.append(world.console.lines.last());
    });
    click(u"launchWithPhotoMechanic"_s);
    click(u"launchWithPhotoMechanic"_s);
    EXPECT_EQ(seen, QStringList({u"on"_s, u"[SettingsView] Toggle changed from false to true"_s, u"off"_s,
                                 u"[SettingsView] Toggle changed from true to false"_s}));
    EXPECT_EQ(world.console.lines.last(),
              u"[SettingsView] Posted PhotoMechanicSettingChanged notification"_s);
}

TEST_F(SettingsViewTest, StyleFallbackAndCreditFollowTheSettingsAndSetThem) {
    showTab(2);
    SettingsStore& settings = world.settings;
    settings.setCaptionStyle(CaptionStyle::imagnImages);
    EXPECT_TRUE(find<QAbstractButton>(u"captionStyle2"_s)->isChecked());
    click(u"captionStyle1"_s);
    EXPECT_EQ(settings.captionStyle(), CaptionStyle::gettySports);

    settings.setFallbackBehavior(FallbackBehavior::omitCaption);
    EXPECT_EQ(find<Picker>(u"fallbackBehavior"_s)->currentText(), u"Leave Caption Field Blank"_s);
    QTest::keyClick(find(u"fallbackBehavior"_s), Qt::Key_Down);
    EXPECT_EQ(settings.fallbackBehavior(), FallbackBehavior::attemptCaption);

    const bool appended = settings.appendCreditToCaption();
    click(u"appendCreditToCaption"_s);
    EXPECT_EQ(settings.appendCreditToCaption(), !appended);

    auto* check = view->findChild<QAction*>(u"defaultRightsFallbackSet"_s);
    EXPECT_FALSE(check->isVisible());
    QTest::keyClicks(find(u"defaultRightsFallback"_s), u"AP Photo/John Smith"_s);
    EXPECT_EQ(settings.defaultRightsFallback(), u"AP Photo/John Smith"_s);
    EXPECT_TRUE(check->isVisible());
}

TEST_F(SettingsViewTest, StatisticsLookTheSameInEveryLanguageAndAreClearedButForLifetimeCountAndCosts) {
    const auto restored = qScopeGuard([before = QLocale()] { QLocale::setDefault(before); });
    QLocale::setDefault(QLocale::German);
    showTab(3);
    world.status.beginTimedRun(4);
    world.clock.advance(std::chrono::milliseconds(9200));
    world.status.recordBatchFinished();
    world.status.setLifetimeImagesProcessed(12'345);
    world.status.setTotalProcessedAllTime(2);
    world.status.setTotalFailedAllTime(1);
    world.usage.recordUsage(1'000'000, 500'000);
    const auto figures = [this] {
        return QStringList{textOf(u"successRate"_s),    textOf(u"successCounts"_s), textOf(u"averageTime"_s),
                           textOf(u"lifetimeImages"_s), textOf(u"todaysCost"_s),    textOf(u"totalCost"_s)}
            .join(u' ');
    };
    const QString full = u"66.7% (2 processed, 1 failed) 2.3s 12345 $0.4500 $0.45"_s;
    EXPECT_EQ(figures(), full);
    click(u"clearStatistics"_s); // the user cancels
    EXPECT_EQ(figures(), full);
    world.alerts.answer = 1;
    click(u"clearStatistics"_s);
    EXPECT_EQ(figures(), u"0.0% (0 processed, 0 failed) 0.0s 12345 $0.4500 $0.45"_s);
    EXPECT_EQ(world.alerts.titles(),
              QStringList({u"Clear All Statistics?"_s, u"Clear All Statistics?"_s, u"Statistics Cleared"_s}));
}

TEST_F(SettingsViewTest, ThePromptCacheIsCountedWhenShownAndCleared) {
    await(world.prompts.fetchPrompts({}));
    showTab(3);
    const auto shown = [this] { return find<SettingRow>(u"clearPromptCacheRow"_s)->name(); };
    EXPECT_EQ(shown(), u"Cached Prompts: 1"_s);
    world.clock.advance(PromptCache::duration + std::chrono::seconds(1));
    showTab(0);
    showTab(3);
    EXPECT_EQ(shown(), u"Cached Prompts: 1 (1 expired)"_s);
    click(u"clearPromptCache"_s); // the user cancels
    EXPECT_EQ(world.prompts.cacheCounts().cached, 1);
    world.alerts.answer = 1;
    click(u"clearPromptCache"_s);
    EXPECT_EQ(shown(), u"Cached Prompts: 0"_s);
    EXPECT_EQ(world.alerts.shown.last().title, u"Cache Cleared"_s);
    await(world.prompts.finishPending());
}

TEST_F(SettingsViewTest, EscapeClosesAnExplanationAndThenTheWindow) {
    auto* info = find<InfoButton>(u"keyInfo"_s);
    QTest::keyClick(info, Qt::Key_Space);
    ASSERT_TRUE(info->popover());
    QTest::keyClick(info->popover(), Qt::Key_Escape);
    EXPECT_TRUE(view->isVisible());
    showTab(2);
    QTest::keyClick(find(u"defaultRightsFallback"_s), Qt::Key_Escape);
    EXPECT_FALSE(view->isVisible());
}

TEST_F(SettingsViewTest, KeysReachEachTabAndEachControlOfIt) {
    const QString orders[] = {
        u"keyInfo apiKey apiKeyReveal saveKey getKey launchWithPhotoMechanic startAtLogin"_s,
        u"ftpHost ftpPort ftpUsername ftpPassword ftpPasswordReveal ftpEncryption0 ftpEncryptionInfo ftpPath testConnection clearFtpSettings"_s,
        u"captionStyle0 fallbackBehaviorInfo fallbackBehavior appendCreditToCaptionInfo "
        "appendCreditToCaption defaultRightsFallbackInfo defaultRightsFallback"_s,
        u"clearStatistics clearPromptCache"_s,
    };
    auto* bar = find<QTabBar>(u"settingsTabs"_s);
    for (int tab = 0; tab < bar->count(); ++tab) {
        ASSERT_EQ(bar->currentIndex(), tab);
        bar->setFocus();
        QTest::keyClick(bar, Qt::Key_Tab);
        EXPECT_EQ(tabStops(view->focusWidget(), u"showOnboarding"_s).join(u' ').toStdString(),
                  orders[tab].toStdString());
        QTest::keyClick(view.get(), tab % 2 == 0 ? Qt::Key_PageDown : Qt::Key_Tab, Qt::ControlModifier);
    }
    EXPECT_EQ(bar->currentIndex(), 0) << "the last tab leads back to the first";
    QTest::keyClick(view.get(), Qt::Key_PageUp, Qt::ControlModifier);
    EXPECT_EQ(bar->currentIndex(), 3);
    QTest::keyClick(view.get(), Qt::Key_Backtab, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(bar->currentIndex(), 2);
}

TEST_F(SettingsViewTest, StartAtLoginIsTheEntryOfTheDesktop) {
    const QString entry =
        world.folder.filePath(u"xdg-config/autostart/com.tobinvasquel.OstrelleCaptions.desktop"_s);
    const auto isOn = [this] {
        showTab(1);
        showTab(0);
        await(view->finished());
        return find<QAbstractButton>(u"startAtLogin"_s)->isChecked();
    };
    EXPECT_FALSE(isOn());
    click(u"startAtLogin"_s);
    EXPECT_TRUE(isOn());
    EXPECT_TRUE(contentsOf(entry).contains("\nExec=\"/opt/a program/ostrelle-captions\" --hidden\n"));
    writeFile(entry, contentsOf(entry) + "X-GNOME-Autostart-enabled=false\n");
    EXPECT_FALSE(isOn()) << "switched off by the desktop's own tool";
    click(u"startAtLogin"_s);
    EXPECT_TRUE(isOn());
    for (int time = 0; time < 11; ++time) {
        click(u"startAtLogin"_s);
    }
    EXPECT_FALSE(isOn()) << "the last of many counts";
    EXPECT_FALSE(QFileInfo::exists(entry));
    QDir().rmdir(world.folder.filePath(u"xdg-config/autostart"_s));
    writeFile(world.folder.filePath(u"xdg-config/autostart"_s), "a file in place of the folder");
    click(u"startAtLogin"_s);
    EXPECT_FALSE(isOn());
    EXPECT_EQ(world.alerts.titles(), QStringList(u"Start at Login Not Changed"_s));
}

} // namespace ostrelle
