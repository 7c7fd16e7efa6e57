// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/SettingsView.h"

#include "shell/InfoButton.h"
#include "shell/Picker.h"
#include "shell/Popover.h"
#include "shell/SettingRow.h"
#include "shell/ShellFixture.h"
#include "shell/StatusMark.h"
#include "shell/Switch.h"
#include "support/Await.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTabBar>
#include <QTest>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString keyName = u"OPENAI_API_KEY"_s;

/// A connection test that a test lets end when it wants.
struct HeldTest {
    QCoro::Task<bool> operator()() {
        ++*begun;
        const auto ended = result;
        while (!*ended) {
            co_await clock->sleep(std::chrono::seconds(1));
        }
        co_return **ended;
    }

    Clock* clock;
    std::shared_ptr<int> begun = std::make_shared<int>(0);
    std::shared_ptr<std::optional<bool>> result = std::make_shared<std::optional<bool>>();
};

class SettingsViewTest : public testing::Test {
protected:
    SettingsViewTest() {
        QCoreApplication::setApplicationVersion(u"7.8.9"_s);
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
    void showTab(int index) { find<QTabBar>(u"settingsTabs"_s)->setCurrentIndex(index); }
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
    /// The connection status as shown, with its sign; nothing when there is none.
    std::optional<std::pair<StatusTone, QString>> status() {
        const auto* mark = find<StatusMark>(u"ftpConnectionStatus"_s);
        return mark->isVisible() ? std::optional(std::pair(mark->tone(), mark->text())) : std::nullopt;
    }
    void enterServer() {
        world.settings.setFtpHost(u"ftp.gameday.example"_s);
        world.settings.setFtpUsername(u"sideline"_s);
        world.settings.setFtpPassword(u"secret"_s);
    }

    ShellWorld world;
    std::unique_ptr<SettingsView> view;
};

} // namespace

TEST_F(SettingsViewTest, APastedKeyIsStoredWithoutTheWhiteSpaceAroundIt) {
    EXPECT_EQ(textOf(u"keyState"_s), u"No API Key Set"_s);
    auto* field = find<QLineEdit>(u"apiKey"_s);
    EXPECT_EQ(field->echoMode(), QLineEdit::Password);
    field->setText(u" \n"_s);
    click(u"saveKey"_s);
    EXPECT_FALSE(world.defaults.exists(keyName));
    EXPECT_TRUE(world.alerts.shown.isEmpty());

    field->setText(u"sk-pasted\n"_s);
    click(u"saveKey"_s);
    EXPECT_EQ(world.defaults.get<QString>(keyName), u"sk-pasted"_s);
    EXPECT_TRUE(world.settings.hasAPIKey());
    ASSERT_EQ(titlesOfAlerts(), QStringList(u"API Key Saved"_s));
    EXPECT_EQ(world.alerts.shown.first().style, Alert::Style::informational);
    EXPECT_EQ(world.alerts.shown.first().buttons, QStringList(u"OK"_s));
    EXPECT_EQ(textOf(u"keyState"_s), u"Using Personal API Key"_s);
    EXPECT_FALSE(field->isVisible());
    EXPECT_TRUE(field->text().isEmpty());
}

TEST_F(SettingsViewTest, EnterSavesTheKeyAndAYesClearsIt) {
    QTest::keyClicks(find(u"apiKey"_s), u"sk-typed"_s);
    QTest::keyClick(find(u"apiKey"_s), Qt::Key_Return);
    world.alerts.answer = 1;
    click(u"clearKey"_s);
    EXPECT_EQ(world.defaults.get<QString>(keyName), u"sk-typed"_s);
    EXPECT_EQ(world.alerts.shown.last().title, u"Clear API Key?"_s);
    EXPECT_EQ(world.alerts.shown.last().style, Alert::Style::warning);
    EXPECT_EQ(world.alerts.shown.last().buttons, QStringList({u"Clear"_s, u"Cancel"_s}));
    world.alerts.answer = 0;
    click(u"clearKey"_s);
    EXPECT_FALSE(world.defaults.exists(keyName));
    EXPECT_FALSE(world.settings.hasAPIKey());
    EXPECT_TRUE(find(u"apiKey"_s)->isVisible());
}

TEST_F(SettingsViewTest, AKeyThatAnotherProcessStoredIsSeenWhenTheWindowIsShown) {
    view->hide();
    world.defaults.set(keyName, u"sk-other"_s);
    view->show();
    EXPECT_EQ(textOf(u"keyState"_s), u"Using Personal API Key"_s);
}

TEST_F(SettingsViewTest, LinksAndTheFootLeadElsewhere) {
    QSignalSpy onboarding(&world.events, &AppEvents::showOnboardingWindow);
    click(u"getKey"_s);
    click(u"showOnboarding"_s);
    EXPECT_EQ(world.workspace.links, QList<QUrl>{QUrl(u"https://platform.openai.com/api-keys"_s)});
    EXPECT_EQ(onboarding.size(), 1);
    EXPECT_TRUE(textOf(u"settingsVersion"_s).contains(u"Version 7.8.9"_s));
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

TEST_F(SettingsViewTest, FieldsAndSettingsOfTheServerFollowEachOther) {
    showTab(1);
    SettingsStore& settings = world.settings;
    enterServer(); // as the keychain's answer comes: late
    EXPECT_EQ(find<QLineEdit>(u"ftpPassword"_s)->text(), u"secret"_s);
    EXPECT_EQ(find<QLineEdit>(u"ftpPassword"_s)->echoMode(), QLineEdit::Password);
    for (const QString& name : {u"ftpHost"_s, u"ftpUsername"_s, u"ftpPassword"_s, u"ftpPath"_s}) {
        find<QLineEdit>(name)->clear();
        QTest::keyClicks(find(name), u"typed"_s);
        EXPECT_EQ(settings.property(name.toUtf8()).toString(), u"typed"_s) << name.toStdString();
    }
}

TEST_F(SettingsViewTest, OnlyAPortIsTakenForAPort) {
    showTab(1);
    const struct {
        QString typed;
        qint64 stored;
    } rows[] = {{u"2121"_s, 2121}, {u"0"_s, 21}, {u""_s, 21}, {u"21a"_s, 21}, {u"65536"_s, 6553}};
    auto* port = find<QLineEdit>(u"ftpPort"_s);
    for (const auto& row : rows) {
        world.settings.setFtpPort(21);
        port->setFocus();
        port->selectAll();
        QTest::keyClick(port, Qt::Key_Delete);
        QTest::keyClicks(port, row.typed);
        EXPECT_EQ(world.settings.ftpPort(), row.stored) << row.typed.toStdString();
        QTest::keyClick(port, Qt::Key_Return);
        EXPECT_EQ(port->text(), QString::number(row.stored)) << row.typed.toStdString();
    }
    world.settings.setFtpPort(99999); // stored by other means
    EXPECT_EQ(port->text(), u"99999"_s);
}

TEST_F(SettingsViewTest, AConnectionTestNeedsHostUserAndPassword) {
    HeldTest test{&world.clock};
    show(std::make_unique<SettingsView>(world.parts, test));
    showTab(1);
    for (const auto clear :
         {&SettingsStore::setFtpHost, &SettingsStore::setFtpUsername, &SettingsStore::setFtpPassword}) {
        enterServer();
        (world.settings.*clear)({});
        click(u"testConnection"_s);
        EXPECT_EQ(status(), std::pair(StatusTone::destroying, u"Please fill in all required fields"_s));
    }
    EXPECT_EQ(*test.begun, 0);
}

TEST_F(SettingsViewTest, AConnectionTestTellsHowItWent) {
    HeldTest test{&world.clock};
    show(std::make_unique<SettingsView>(world.parts, test));
    showTab(1);
    enterServer();
    world.settings.setTransferProtocol(TransferProtocol::sftp);
    const std::pair<bool, QString> rows[] = {{true, u"Connection successful"_s},
                                             {false, u"Connection failed"_s}};
    auto* button = find<QAbstractButton>(u"testConnection"_s);
    for (const auto& [succeeds, words] : rows) {
        *test.result = std::nullopt;
        button->click();
        button->click(); // while it runs
        EXPECT_FALSE(world.settings.ftpConnectionStatus()) << "the result of the last test is gone";
        *test.result = succeeds;
        world.clock.advance(std::chrono::seconds(1));
        await(view->finished());
        EXPECT_EQ(status(), std::pair(succeeds ? StatusTone::good : StatusTone::destroying, words));
    }
    EXPECT_EQ(*test.begun, 2);
}

TEST_F(SettingsViewTest, ATestThatThrowsHasFailed) {
    show(std::make_unique<SettingsView>(world.parts,
                                        []() -> QCoro::Task<bool> { throw std::runtime_error("refused"); }));
    showTab(1);
    enterServer();
    click(u"testConnection"_s);
    EXPECT_EQ(status(), std::pair(StatusTone::destroying, u"Connection failed"_s));
    EXPECT_EQ(world.console.lines.last(), u"[SettingsView] A connection test failed: refused"_s);
}

TEST_F(SettingsViewTest, AWindowThatGoesLeavesItsTestToEndUnheard) {
    HeldTest test{&world.clock};
    show(std::make_unique<SettingsView>(world.parts, test));
    enterServer();
    find<QAbstractButton>(u"testConnection"_s)->click();
    QCoro::Task<> finished = view->finished();
    show(std::make_unique<SettingsView>(world.parts));
    *test.result = true;
    world.clock.advance(std::chrono::seconds(1));
    await(std::move(finished));
    EXPECT_FALSE(world.settings.ftpConnectionStatus());
}

TEST_F(SettingsViewTest, WithoutAClientTheTestSaysSo) {
    showTab(1);
    enterServer();
    click(u"testConnection"_s);
    EXPECT_EQ(status(),
              std::pair(StatusTone::destroying, u"This version cannot connect to FTP servers yet."_s));
}

TEST_F(SettingsViewTest, ClearingTheServerKeepsTheProtocolAndDropsARunningTest) {
    HeldTest test{&world.clock};
    show(std::make_unique<SettingsView>(world.parts, test));
    showTab(1);
    SettingsStore& settings = world.settings;
    settings.setTransferProtocol(TransferProtocol::sftp);
    enterServer();
    settings.setFtpPath(u"/cam1"_s);
    settings.setFtpPort(2222);
    find<QAbstractButton>(u"testConnection"_s)->click();
    find<QAbstractButton>(u"clearFtpSettings"_s)->click();
    *test.result = true;
    world.clock.advance(std::chrono::seconds(1));
    await(view->finished());
    EXPECT_FALSE(status()) << "of a server that is no longer set";
    EXPECT_EQ(settings.transferProtocol(), TransferProtocol::sftp);
    EXPECT_EQ(settings.ftpHost() + settings.ftpUsername() + settings.ftpPassword(), QString());
    EXPECT_EQ(settings.ftpPath(), u"/"_s);
    EXPECT_EQ(find<QLineEdit>(u"ftpPort"_s)->text(), u"21"_s);
    settings.setTransferProtocol(TransferProtocol::ftp);
    EXPECT_EQ(settings.ftpPort(), 21);
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

TEST_F(SettingsViewTest, ClearedStatisticsLeaveTheLifetimeCountAndTheCosts) {
    showTab(3);
    world.status.beginTimedRun(2);
    world.clock.advance(std::chrono::seconds(5));
    world.status.recordBatchFinished();
    world.status.setLifetimeImagesProcessed(1240);
    world.status.setTotalProcessedAllTime(3);
    world.status.setTotalFailedAllTime(1);
    world.usage.recordUsage(1'000'000, 100'000);
    EXPECT_EQ(textOf(u"successRate"_s) + textOf(u"successCounts"_s), u"75.0%(3 processed, 1 failed)"_s);
    EXPECT_EQ(textOf(u"averageTime"_s), u"2.5s"_s);
    const QString costs = textOf(u"todaysCost"_s) + textOf(u"totalCost"_s);
    EXPECT_NE(costs, u"$0.0000$0.00"_s);

    click(u"clearStatistics"_s); // and cancel
    EXPECT_EQ(world.status.totalProcessedAllTime(), 3);
    world.alerts.answer = 1;
    click(u"clearStatistics"_s);
    EXPECT_EQ(textOf(u"successRate"_s) + textOf(u"successCounts"_s), u"0.0%(0 processed, 0 failed)"_s);
    EXPECT_EQ(textOf(u"averageTime"_s), u"0.0s"_s);
    EXPECT_EQ(textOf(u"lifetimeImages"_s), u"1240"_s);
    EXPECT_EQ(textOf(u"todaysCost"_s) + textOf(u"totalCost"_s), costs);
    EXPECT_EQ(titlesOfAlerts(),
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
    click(u"clearPromptCache"_s); // and cancel
    EXPECT_EQ(world.prompts.cacheCounts().cached, 1);
    world.alerts.answer = 1;
    click(u"clearPromptCache"_s);
    EXPECT_EQ(shown(), u"Cached Prompts: 0"_s);
    EXPECT_EQ(world.alerts.shown.last().title, u"Cache Cleared"_s);
    await(world.prompts.finishPending());
}

TEST_F(SettingsViewTest, EscapeClosesAnExplanationAndThenTheWindow) {
    const std::pair<int, QString> rows[] = {{0, u"keyInfo"_s},
                                            {2, u"fallbackBehaviorInfo"_s},
                                            {2, u"appendCreditToCaptionInfo"_s},
                                            {2, u"defaultRightsFallbackInfo"_s}};
    for (const auto& [tab, name] : rows) {
        showTab(tab);
        auto* info = find<InfoButton>(name);
        info->setFocus();
        QTest::keyClick(info, Qt::Key_Space);
        ASSERT_TRUE(info->popover() && info->popover()->isVisible()) << name.toStdString();
        QTest::keyClick(info->popover(), Qt::Key_Escape);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        EXPECT_FALSE(info->popover()) << name.toStdString();
        EXPECT_TRUE(view->isVisible());
    }
    QTest::keyClick(find(u"defaultRightsFallback"_s), Qt::Key_Escape);
    EXPECT_FALSE(view->isVisible());
}

TEST_F(SettingsViewTest, KeysReachEachTabAndEachControlOfIt) {
    world.settings.setFtpConnectionStatus(std::nullopt);
    const QStringList orders[] = {
        {u"keyInfo"_s, u"apiKey"_s, u"apiKeyReveal"_s, u"saveKey"_s, u"getKey"_s,
         u"launchWithPhotoMechanic"_s},
        {u"ftpHost"_s, u"ftpPort"_s, u"ftpUsername"_s, u"ftpPassword"_s, u"ftpPasswordReveal"_s, u"ftpPath"_s,
         u"testConnection"_s, u"clearFtpSettings"_s},
        {u"captionStyle0"_s, u"fallbackBehaviorInfo"_s, u"fallbackBehavior"_s, u"appendCreditToCaptionInfo"_s,
         u"appendCreditToCaption"_s, u"defaultRightsFallbackInfo"_s, u"defaultRightsFallback"_s},
        {u"clearStatistics"_s, u"clearPromptCache"_s},
    };
    auto* bar = find<QTabBar>(u"settingsTabs"_s);
    for (int tab = 0; tab < bar->count(); ++tab) {
        ASSERT_EQ(bar->currentIndex(), tab);
        bar->setFocus();
        QStringList reached;
        for (QTest::keyClick(bar, Qt::Key_Tab); view->focusWidget()->objectName() != u"showOnboarding"_s;
             QTest::keyClick(view->focusWidget(), Qt::Key_Tab)) {
            const QWidget* widget = view->focusWidget();
            reached.append(widget->objectName());
            ASSERT_LT(reached.size(), 20);
            const auto* button = qobject_cast<const QAbstractButton*>(widget);
            EXPECT_TRUE(!widget->accessibleName().isEmpty() || (button && !button->text().isEmpty()))
                << widget->objectName().toStdString();
        }
        EXPECT_EQ(reached, orders[tab]) << reached.join(u' ').toStdString();
        QTest::keyClick(view.get(), tab % 2 == 0 ? Qt::Key_PageDown : Qt::Key_Tab, Qt::ControlModifier);
    }
    EXPECT_EQ(bar->currentIndex(), 0) << "behind the last tab is the first";
    QTest::keyClick(view.get(), Qt::Key_PageUp, Qt::ControlModifier);
    EXPECT_EQ(bar->currentIndex(), 3);
    QTest::keyClick(view.get(), Qt::Key_Backtab, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(bar->currentIndex(), 2);
}

} // namespace ostrelle
