// SPDX-License-Identifier: GPL-3.0-or-later
// Writes a picture of every view in light and dark, for looking at: ostrelle-screens FOLDER.
#include "pipeline/ReadinessRules.h"
#include "shell/ProgramWorld.h"
#include "shell/ScreenShots.h"
#include "shell/ToolkitGallery.h"
#include "shell/desktop/DesktopAlerts.h"
#include "shell/toolkit/ColorSwatchPicker.h"
#include "shell/toolkit/InfoButton.h"
#include "shell/toolkit/Popover.h"
#include "shell/toolkit/Theme.h"

#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QMenuBar>
#include <QMessageBox>
#include <QScrollArea>
#include <QScrollBar>
#include <QTabBar>
#include <QTest>
#include <cstdio>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// Writes the pictures of one theme, named after what they show.
class Screens {
public:
    Screens(QString folder, QString theme) : m_folder(std::move(folder)), m_theme(std::move(theme)) {}

    void write(QWidget& window, const QString& name) {
        const QString path = u"%1/%2-%3.png"_s.arg(m_folder, name, m_theme);
        if (!saveScreenshot(window, path)) {
            std::fprintf(stderr, "ostrelle-screens: cannot write %s\n", qPrintable(path));
            m_isWritten = false;
        }
    }
    /// The window with the popover of one of its info buttons.
    void writeInfo(QWidget& window, const QString& button, const QString& name) {
        auto* info = window.findChild<InfoButton*>(button);
        info->openPopover();
        write(window, name);
        info->popover()->close();
    }

    bool isWritten() const { return m_isWritten; }

private:
    QString m_folder;
    QString m_theme;
    bool m_isWritten = true;
};

/// A football game that is set up but for the auto mode.
struct GameWorld : ProgramWorld {
    GameWorld() {
        usage.recordUsage(420'000, 31'000);
        settings.setHasAPIKey(true);
        settings.setIngestFolder(u"/home/desk/2025-10-26 UK–Tenn"_s);
        settings.setDestinationFolder(
            u"/home/desk/From the server, Kentucky against Tennessee, second half"_s);
        putRoster("12\tJohn Smith\n");
        settings.setCodeReplacementsFile(folder.filePath(u"code-replacements.txt"_s));
        settings.setUseTeamIdentification(true);
        settings.setTeam1Name(u"Kentucky"_s);
        settings.setTeam1Color(u"Blue"_s);
        settings.setTeam2Name(u"Tennessee"_s);
        settings.setTeam2Color(u"Orange"_s);
        start();
    }
    void putRoster(const QByteArray& bytes) {
        QFile file(folder.filePath(u"code-replacements.txt"_s));
        file.open(QIODevice::WriteOnly);
        file.write(bytes);
    }
    QWidget& panel() { return *delegate.mainWindow(); }
    void scrollToBottom() {
        QScrollBar* bar = panel().findChild<QScrollArea*>()->verticalScrollBar();
        QApplication::processEvents();
        bar->setValue(bar->maximum());
    }
};

/// 24 images, of which 16 are done, in batches of ten; or 8 in one batch.
void setRun(StatusStore& status, qint64 batches) {
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

void writePanel(Screens& screens) {
    GameWorld world;
    screens.write(world.panel(), u"panel"_s);
    setRun(world.status, 1);
    screens.write(world.panel(), u"panel-batch"_s);
    setRun(world.status, 3);
    screens.write(world.panel(), u"panel-batches"_s);
    world.status.setIsProcessing(false);
    world.settings.setAutoMode(true);
    world.status.setNextScanCountdown(7);
    screens.write(world.panel(), u"panel-auto"_s);
    world.scrollToBottom();
    screens.write(world.panel(), u"panel-bottom"_s);
}

void writeFirstStart(Screens& screens) {
    GameWorld world;
    world.settings.setHasAPIKey(false);
    world.settings.setIngestFolder(std::nullopt);
    world.settings.setCodeReplacementsFile(std::nullopt);
    world.settings.setUseTeamIdentification(false);
    screens.write(world.panel(), u"panel-first-start"_s);
}

void writeTroubles(Screens& screens) {
    GameWorld world;
    world.putRoster("12\tJ\xF8rgen\n");
    world.settings.setCodeReplacementsFile(std::nullopt);
    world.settings.setCodeReplacementsFile(world.folder.filePath(u"code-replacements.txt"_s));
    auto* row = world.panel().findChild<QWidget*>(u"codeReplacementsRow"_s);
    waitUntil([row] { return row->findChild<QWidget*>(u"codeReplacementsNote"_s) != nullptr; });
    world.status.setManifestFailure(u"No space left on device"_s);
    screens.write(world.panel(), u"panel-troubles"_s);
    Q_EMIT world.events.showOnboardingWindow();
    QWidget& tour = *world.window(u"Welcome to Ostrelle Captions"_s);
    auto* problem = tour.findChild<QWidget*>(u"onboardingRosterProblem"_s);
    QTest::keyClick(&tour, Qt::Key_Right);
    QTest::keyClick(&tour, Qt::Key_Right);
    waitUntil([problem] { return problem->isVisible(); });
    screens.write(tour, u"onboarding-roster-problem"_s);
}

void writePanelOfServer(Screens& screens) {
    GameWorld world;
    world.settings.setSourceType(SourceType::ftp);
    world.settings.setDestinationFolder(std::nullopt);
    screens.write(world.panel(), u"panel-ftp-incomplete"_s);
    world.settings.setDestinationFolder(
        u"/home/desk/From the server, Kentucky against Tennessee, second half"_s);
    world.settings.setFtpHost(u"ftp.gameday.example"_s);
    world.status.setFtpIsDownloading(true);
    world.status.setFtpStatusMessage(u"Downloading 2N6A4471.CR3 (3 of 12 files)"_s);
    world.status.setFtpTotalBytesToDownload(100);
    world.status.setFtpDownloadProgress(0.4);
    screens.write(world.panel(), u"panel-ftp"_s);
    setRun(world.status, 0);
    screens.write(world.panel(), u"panel-ftp-captioning"_s);
}

void writeWhatOpensOverThePanel(Screens& screens) {
    GameWorld world;
    screens.writeInfo(world.panel(), u"sportInfo"_s, u"info-sport"_s);
    auto* sports = world.panel().findChild<QComboBox*>(u"sport"_s);
    sports->showPopup();
    screens.write(world.panel(), u"pick-sport"_s);
    sports->hidePopup();
    auto* color = world.panel().findChild<ColorSwatchPicker*>(u"team1Color"_s);
    color->click();
    screens.write(world.panel(), u"pick-color"_s);
    color->popover()->close();
    QMenu* menu = world.panel().findChild<QMenuBar*>()->actions().first()->menu();
    menu->popup(world.panel().mapToGlobal(QPoint(0, world.panel().findChild<QMenuBar*>()->height())));
    screens.write(world.panel(), u"menu"_s);
    menu->close();
    world.scrollToBottom();
    screens.writeInfo(world.panel(), u"alwaysOverwriteCaptionsInfo"_s, u"info-overwrite"_s);
}

void writeSettings(Screens& screens) {
    GameWorld world;
    world.settings.setHasAPIKey(false);
    world.status.setLifetimeImagesProcessed(18'342);
    world.status.setTotalProcessedAllTime(1'204);
    world.status.setTotalFailedAllTime(32);
    await(world.prompts.fetchPrompts({}));
    Q_EMIT world.events.showSettingsWindow();
    QWidget& window = *world.window(u"Settings"_s);
    screens.write(window, u"settings-api"_s);
    screens.writeInfo(window, u"keyInfo"_s, u"settings-api-info"_s);
    world.defaults.set(u"OPENAI_API_KEY"_s, u"key"_s);
    world.settings.setHasAPIKey(true);
    screens.write(window, u"settings-api-key"_s);

    auto* tabs = window.findChild<QTabBar*>();
    tabs->setCurrentIndex(1);
    screens.write(window, u"settings-ftp"_s);
    world.settings.setFtpHost(u"ftp.gameday.example"_s);
    world.settings.setFtpUsername(u"sideline"_s);
    world.settings.setFtpPassword(u"12345678"_s);
    world.settings.setFtpConnectionStatus(u"success"_s);
    screens.write(window, u"settings-ftp-success"_s);
    world.settings.setFtpConnectionStatus(u"Connection failed"_s);
    screens.write(window, u"settings-ftp-failure"_s);

    tabs->setCurrentIndex(2);
    world.settings.setDefaultRightsFallback(u"AP Photo/John Smith"_s);
    screens.write(window, u"settings-captioning"_s);
    screens.writeInfo(window, u"fallbackBehaviorInfo"_s, u"settings-captioning-info"_s);
    tabs->setCurrentIndex(3);
    screens.write(window, u"settings-statistics"_s);
}

void writeGuidance(Screens& screens) {
    GameWorld world;
    world.settings.setCodeReplacementsFile(std::nullopt);
    Q_EMIT world.events.showOnboardingWindow();
    QWidget& tour = *world.window(u"Welcome to Ostrelle Captions"_s);
    for (int page = 1; page <= 7; ++page) {
        screens.write(tour, u"onboarding-%1"_s.arg(page));
        QTest::keyClick(&tour, Qt::Key_Right);
    }
    Q_EMIT world.events.showHelpWindow();
    screens.write(*world.window(u"Help - IPTC Preset Guide"_s), u"help"_s);
    Q_EMIT world.events.showAboutWindow();
    screens.write(*world.window(u"About Ostrelle Captions"_s), u"about"_s);
}

void writeAlert(Screens& screens, const Alert& alert, const QString& name) {
    DesktopAlerts alerts;
    QCoro::Task<int> answer = alerts.show(alert);
    QMessageBox* box = nullptr;
    waitUntil([&box] {
        const QWidgetList windows = QApplication::topLevelWidgets();
        for (QWidget* window : windows) {
            box = box == nullptr && window->isVisible() ? qobject_cast<QMessageBox*>(window) : box;
        }
        return box != nullptr;
    });
    screens.write(*box, name);
    box->reject();
    await(std::move(answer));
}

void writeAlerts(Screens& screens) {
    writeAlert(screens, configurationAlert({u"OpenAI API Key"_s, u"Watch Folder"_s}), u"alert-missing"_s);
    writeAlert(screens, captionAllQuestion(), u"alert-caption-all"_s);
}

/// The toolkit's controls, and the ring that shows which of them has the focus.
void writeToolkit(Screens& screens) {
    ToolkitGallery window;
    screens.write(window, u"toolkit"_s);
    window.activateWindow();
    for (const QString& name :
         {u"main"_s, u"byColor"_s, u"audioInfo"_s, u"style0"_s, u"sport"_s, u"Blue"_s}) {
        window.findChild<QWidget*>(name)->setFocus(Qt::TabFocusReason);
        screens.write(window, u"toolkit-focus-"_s + name);
    }
}

bool writeAll(const QString& folder, const QString& theme) {
    Screens screens(folder, theme);
    for (const auto& write :
         {writePanel, writeFirstStart, writeTroubles, writePanelOfServer, writeWhatOpensOverThePanel,
          writeSettings, writeGuidance, writeAlerts, writeToolkit}) {
        write(screens);
    }
    return screens.isWritten();
}

} // namespace

} // namespace ostrelle

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QCoreApplication::setApplicationVersion(QStringLiteral(OSTRELLE_VERSION));
    QApplication::setQuitOnLastWindowClosed(false);
    if (application.arguments().size() != 2) {
        std::fprintf(stderr, "Usage: ostrelle-screens FOLDER\n");
        return 2;
    }
    const QString folder = application.arguments().at(1);
    ostrelle::usePictureFont(application);
    ostrelle::applyTheme(application, ostrelle::ThemeChoice::light);
    const bool light = ostrelle::writeAll(folder, QStringLiteral("light"));
    ostrelle::applyTheme(application, ostrelle::ThemeChoice::dark);
    const bool dark = ostrelle::writeAll(folder, QStringLiteral("dark"));
    return light && dark ? 0 : 1;
}
