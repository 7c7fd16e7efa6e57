// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/Scenes.h"

#include "pipeline/ReadinessRules.h"
#include "services/OpenAIError.h"
#include "shell/desktop/DroppedFiles.h"
#include "shell/panel/DropNotice.h"
#include "shell/toolkit/ColorSwatchPicker.h"
#include "shell/toolkit/InfoButton.h"
#include "support/FileFacts.h"

#include <QComboBox>
#include <QDialog>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMainWindow>
#include <QMenuBar>
#include <QScrollArea>
#include <QScrollBar>
#include <QTabBar>
#include <QTest>
#include <algorithm>

namespace ostrelle {

using namespace Qt::StringLiterals;

const QString GameWorld::panel = u"Ostrelle Captions"_s;
const QString GameWorld::settingsWindow = u"Settings"_s;
const QString GameWorld::tour = u"Welcome to Ostrelle Captions"_s;

GameWorld::GameWorld() {
    usage.recordUsage(420'000, 31'000);
    defaults.set(u"OPENAI_API_KEY"_s, u"key"_s);
    settings.setHasAPIKey(true);
    settings.setIngestFolder(u"/home/desk/2025-10-26 UK–Tenn"_s);
    settings.setDestinationFolder(u"/home/desk/From the server, Kentucky against Tennessee, second half"_s);
    useRoster(u"code-replacements.txt"_s, "12\tJohn Smith\n");
    settings.setUseTeamIdentification(true);
    settings.setTeam1Name(u"Kentucky"_s);
    settings.setTeam1Color(u"Blue"_s);
    settings.setTeam2Name(u"Tennessee"_s);
    settings.setTeam2Color(u"Orange"_s);
    start();
}

GameWorld::~GameWorld() {
    if (m_answer) {
        qobject_cast<QDialog*>(QApplication::activeModalWidget())->reject();
        await(std::move(*m_answer));
    }
}

void GameWorld::useRoster(const QString& name, const QByteArray& bytes) {
    writeFile(folder.filePath(name), bytes);
    settings.setCodeReplacementsFile(folder.filePath(name));
}

void GameWorld::setRun(qint64 batches) {
    const bool isLong = batches != 1;
    status.setIsProcessing(true);
    status.setTotalFiles(isLong ? 24 : 8);
    status.setTotalBatchCount(batches);
    status.setCurrentBatchNumber(isLong ? 2 : 1);
    status.setCurrentBatchSize(isLong ? 10 : 8);
    status.setCurrentBatchStartIndex(isLong ? 10 : 0);
    status.setProcessed(isLong ? 16 : 5);
    status.setCurrentFileIndex(isLong ? 16 : 5);
    status.setCurrentFileName(u"2N6A4471.CR3"_s);
}

void GameWorld::showSettings(int tab) {
    Q_EMIT events.showSettingsWindow();
    find<QTabBar>(u"settingsTabs"_s, settingsWindow)->setCurrentIndex(tab);
}

void GameWorld::showTour(int page) {
    Q_EMIT events.showOnboardingWindow();
    for (int turned = 0; turned < page; ++turned) {
        QTest::keyClick(window(tour), Qt::Key_Right);
    }
}

QWidget& Scene::in(GameWorld& world) const {
    open(world);
    QWidget* shown = window.isEmpty() ? QApplication::activeModalWidget() : ProgramWorld::window(window);
    return *shown;
}

namespace {

void scrollToBottom(GameWorld& world) {
    QScrollBar* bar = world.find<QScrollArea>(u"settingsScroll"_s)->verticalScrollBar();
    QApplication::processEvents();
    bar->setValue(bar->maximum());
}

void forgetSettings(GameWorld& world) {
    world.defaults.remove(u"OPENAI_API_KEY"_s);
    world.settings.setHasAPIKey(false);
    world.defaults.remove(u"recentIngestFolders"_s);
    world.defaults.remove(u"recentCodeReplacementsFiles"_s);
    world.settings.setIngestFolder(std::nullopt);
    world.settings.setCodeReplacementsFile(std::nullopt);
    world.settings.setUseTeamIdentification(false);
}

void loseFolders(GameWorld& world) {
    world.settings.setIngestFolder(u"/media/desk/EOS_DIGITAL/DCIM"_s);
    world.settings.setIngestFolder(std::nullopt);
    world.settings.setCodeReplacementsFile(std::nullopt);
}

void useSpoiltRoster(GameWorld& world) {
    world.useRoster(u"code_replacements.txt"_s, "12\tJ\xF8rgen\n");
}

void showTroubles(GameWorld& world) {
    useSpoiltRoster(world);
    auto* row = world.find(u"codeReplacementsRow"_s);
    waitUntil([row] { return row->findChild<QWidget*>(u"codeReplacementsNote"_s) != nullptr; });
    world.status.setManifestFailure(u"No space left on device"_s);
}

void fail(GameWorld& world, const QString& name, int httpStatus) {
    ImageOutcome image;
    image.file = u"/home/desk/2025-10-26 UK–Tenn/"_s + name;
    image.kind = OutcomeKind::failed;
    image.cause = std::make_exception_ptr(OpenAIError::http(httpStatus, u"{}"_s));
    world.analyzer.announceFailure(image);
}

void showProblems(GameWorld& world) {
    world.settings.setAutoMode(true);
    world.status.setNextScanCountdown(7);
    world.status.setLastMessage(u"Done. Processed: 19, Failed: 6."_s);
    world.status.setSourceTrouble(u"The watch folder is not there: /media/desk/EOS_DIGITAL/DCIM"_s);
    for (int number = 1; number <= 5; ++number) {
        fail(world, u"2N6A447%1.CR3"_s.arg(number), 401);
    }
    fail(world, u"2N6A4479.CR3"_s, 500);
    QApplication::processEvents();
}

void showRosterProblem(GameWorld& world) {
    world.showTour(3);
    useSpoiltRoster(world);
    auto* problem = world.find(u"onboardingRosterProblem"_s, GameWorld::tour);
    waitUntil([problem] { return problem->isVisible(); });
}

void useServer(GameWorld& world) {
    world.settings.setSourceType(SourceType::ftp);
    world.settings.setFtpHost(u"ftp.gameday.example"_s);
    world.status.setFtpIsDownloading(true);
    world.status.setFtpStatusMessage(u"Found 12 new image files. Downloading 3/12..."_s);
    world.status.setFtpTotalBytesToDownload(312'000'000);
    world.status.setFtpBytesDownloaded(124'800'000);
    world.status.setFtpDownloadProgress(0.4);
    world.status.setFtpRemarks({u"Captioned before, not fetched: 2N6A0001.CR3, 2N6A0002.CR3"_s});
}

void openMenu(GameWorld& world) {
    const QMenuBar* bar = world.delegate.mainWindow()->menuBar();
    bar->actions().first()->menu()->popup(bar->mapToGlobal(QPoint(0, bar->height())));
}

void showMissingKey(GameWorld& world) {
    world.defaults.remove(u"OPENAI_API_KEY"_s);
    world.showSettings(0);
}

void showServer(GameWorld& world, const QString& result) {
    world.settings.setFtpHost(u"ftp.gameday.example"_s);
    world.settings.setFtpUsername(u"sideline"_s);
    world.settings.setFtpPassword(u"12345678"_s);
    world.settings.setFtpEncryption(FtpEncryption::explicitTls);
    world.settings.setFtpTrustedCertificate(u"3F:"_s.repeated(31) + u"3F"_s);
    world.settings.setFtpConnectionStatus(result);
    world.showSettings(1);
}

void showCaptioning(GameWorld& world) {
    world.settings.setDefaultRightsFallback(u"AP Photo/John Smith"_s);
    world.showSettings(2);
}

void showStatistics(GameWorld& world) {
    world.status.setLifetimeImagesProcessed(18'342);
    world.status.setTotalProcessedAllTime(1'204);
    world.status.setTotalFailedAllTime(32);
    await(world.prompts.fetchPrompts({}));
    world.showSettings(3);
}

/// A scene with the popover of one of its info buttons.
Scene withInfo(const QString& name, const Scene& scene, const QString& button) {
    return {name, scene.window, [scene, button](GameWorld& world) {
                scene.open(world);
                world.find<InfoButton>(button, scene.window)->openPopover();
            }};
}

QList<Scene> panelScenes() {
    const QString panel = GameWorld::panel;
    const Scene plain = {u"panel"_s, panel, [](GameWorld&) {}};
    const Scene bottom = {u"panel-bottom"_s, panel, scrollToBottom};
    return {
        plain,
        bottom,
        {u"panel-batch"_s, panel, [](GameWorld& world) { world.setRun(1); }},
        {u"panel-batches"_s, panel, [](GameWorld& world) { world.setRun(3); }},
        {u"panel-auto"_s, panel,
         [](GameWorld& world) {
             world.settings.setAutoMode(true);
             world.status.setNextScanCountdown(7);
         }},
        {u"panel-queue"_s, panel,
         [](GameWorld& world) {
             world.settings.setAutoMode(true);
             world.status.setNextScanCountdown(7);
             world.setRun(0);
             world.status.setTotalFiles(1);
             world.status.setQueue({.done = 15, .total = 60, .secondsPerImage = 2.6, .dollars = 0.012});
         }},
        {u"panel-first-start"_s, panel, forgetSettings},
        {u"panel-troubles"_s, panel, showTroubles},
        {u"panel-problems"_s, panel, showProblems},
        {u"panel-ftp-incomplete"_s, panel,
         [](GameWorld& world) {
             world.settings.setSourceType(SourceType::ftp);
             world.settings.setDestinationFolder(std::nullopt);
         }},
        {u"panel-ftp"_s, panel, useServer},
        {u"panel-ftp-captioning"_s, panel,
         [](GameWorld& world) {
             useServer(world);
             world.setRun(0);
         }},
        withInfo(u"info-sport"_s, plain, u"sportInfo"_s),
        withInfo(u"info-overwrite"_s, bottom, u"alwaysOverwriteCaptionsInfo"_s),
        {u"pick-sport"_s, panel, [](GameWorld& world) { world.find<QComboBox>(u"sport"_s)->showPopup(); }},
        {u"pick-color"_s, panel,
         [](GameWorld& world) { world.find<ColorSwatchPicker>(u"team1Color"_s)->click(); }},
        {u"menu"_s, panel, openMenu},
        {u"panel-lost"_s, panel, loseFolders},
        {u"panel-drop"_s, panel,
         [](GameWorld& world) {
             world.find<DropNotice>(u"dropNotice"_s)
                 ->showOver(u"Caption 12 images\nLeft out: plan.pdf"_s, DropNotice::Welcome::yes);
         }},
        {u"panel-drop-refused"_s, panel,
         [](GameWorld& world) {
             world.find<DropNotice>(u"dropNotice"_s)
                 ->showOver(DroppedFiles().words(SourceType::local), DropNotice::Welcome::no);
         }},
        {u"alert-missing"_s,
         {},
         [](GameWorld& world) { world.ask(configurationAlert({u"OpenAI API Key"_s, u"Watch Folder"_s})); }},
        {u"alert-caption-all"_s,
         {},
         [](GameWorld& world) { world.ask(captionAllQuestion(CaptionCount{60, 4, 3})); }},
    };
}

QList<Scene> settingsScenes() {
    const QString window = GameWorld::settingsWindow;
    const Scene missingKey = {u"settings-api"_s, window, showMissingKey};
    const Scene captioning = {u"settings-captioning"_s, window, showCaptioning};
    return {
        missingKey,
        withInfo(u"settings-api-info"_s, missingKey, u"keyInfo"_s),
        {u"settings-api-key"_s, window, [](GameWorld& world) { world.showSettings(0); }},
        {u"settings-ftp"_s, window, [](GameWorld& world) { world.showSettings(1); }},
        {u"settings-ftp-success"_s, window, [](GameWorld& world) { showServer(world, u"success"_s); }},
        {u"settings-ftp-failure"_s, window,
         [](GameWorld& world) { showServer(world, u"Connection failed"_s); }},
        captioning,
        withInfo(u"settings-captioning-info"_s, captioning, u"fallbackBehaviorInfo"_s),
        {u"settings-statistics"_s, window, showStatistics},
    };
}

const QString dashboard = u"Analytics Dashboard"_s;

void showDashboard(GameWorld& world, int days) {
    QJsonArray entries;
    const QDate today = QDate::fromString(world.program.analytics.today(), u"yyyy-MM-dd"_s);
    for (int day = days; day > 0; --day) {
        if (day % 7 != 3 && day % 7 != 4) {
            entries.append(QJsonObject{{u"date"_s, today.addDays(-day).toString(u"yyyy-MM-dd")},
                                       {u"count"_s, 40 + (day * 7919) % 560}});
        }
    }
    world.defaults.set(u"Analytics_ImagesByDay"_s, QJsonDocument(entries).toJson());
    for (int image = 0; image < std::min(days, 24); ++image) {
        world.program.analytics.recordImageProcessed();
        world.program.history.recordOutcome(image % 8 == 7 ? u"failed"_s : u"captioned"_s);
        world.program.history.recordCost(u"gpt-4o-mini"_s, 0.0009);
    }
    Q_EMIT world.events.showAnalyticsWindow();
    auto* range = world.find<QComboBox>(u"timeRange"_s, dashboard);
    range->setCurrentIndex(days > 90 ? 3 : 1);
}

} // namespace

QList<Scene> scenes() {
    QList<Scene> all = panelScenes() + settingsScenes();
    for (int page = 0; page < 8; ++page) {
        all.append({u"onboarding-%1"_s.arg(page + 1), GameWorld::tour,
                    [page](GameWorld& world) { world.showTour(page); }});
    }
    return all + QList<Scene>{
                     {u"onboarding-roster-problem"_s, GameWorld::tour, showRosterProblem},
                     {u"help"_s, u"Help - IPTC Preset Guide"_s,
                      [](GameWorld& world) { Q_EMIT world.events.showHelpWindow(); }},
                     {u"dashboard"_s, dashboard, [](GameWorld& world) { showDashboard(world, 45); }},
                     {u"dashboard-years"_s, dashboard, [](GameWorld& world) { showDashboard(world, 5000); }},
                     {u"dashboard-empty"_s, dashboard, [](GameWorld& world) { showDashboard(world, 0); }},
                     {u"about"_s, u"About Ostrelle Captions"_s,
                      [](GameWorld& world) { Q_EMIT world.events.showAboutWindow(); }},
                 };
}

} // namespace ostrelle
