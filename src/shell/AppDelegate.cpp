// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/AppDelegate.h"

#include "shell/dashboard/AnalyticsView.h"
#include "shell/help/AboutView.h"
#include "shell/help/HelpView.h"
#include "shell/panel/MenuContentView.h"
#include "shell/panel/TrayItem.h"
#include "shell/settings/SettingsView.h"
#include "shell/toolkit/AccessibleView.h"
#include "shell/toolkit/Icon.h"
#include "shell/toolkit/Theme.h"
#include "shell/tour/OnboardingView.h"

#include <QAction>
#include <QEvent>
#include <QGuiApplication>
#include <QMenuBar>
#include <QScreen>
#include <QToolBar>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString onboardingKey = u"hasCompletedOnboarding"_s;
const QString placeKey = u"MainWindow"_s;
const QString trayToldKey = u"hasToldOfTray"_s;

/// The size limited to the screen, with a title bar above the window.
QSize fitting(const QWidget& window, QSize size) {
    constexpr QSize frame(8, 40);
    return size.boundedTo(window.screen()->availableSize() - frame);
}

void centre(QWidget* window) {
    const QRect room = window->screen()->availableGeometry();
    window->move(room.center() - window->rect().center());
}

/// Whether the user can resize a window: not when its content has just one size.
enum class Resizing { free, none };

constexpr auto fixedWindow = Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                             Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint;

/// Makes the window from its parts when first requested, and brings it to the front.
template <typename View, typename... Parts>
void present(std::unique_ptr<View>& window, const QString& title, QSize size, Resizing resizing,
             Parts&... parts) {
    if (!window) {
        window = std::make_unique<View>(parts...);
        window->setWindowTitle(title);
        if (resizing == Resizing::none) {
            window->setWindowFlags(fixedWindow);
        }
        window->resize(fitting(*window, size));
        centre(window.get());
    }
    window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
    window->show();
    if (resizing == Resizing::none) {
        window->setFixedSize(window->size()); // which large type may have made larger
    }
    window->raise();
    window->activateWindow();
}

} // namespace

AppDelegate::AppDelegate(ShellParts parts, AutoModeController& autoMode, std::function<void()> quit)
    : m_parts(parts)
    , m_autoMode(autoMode)
    , m_quit(std::move(quit))
    , m_tasks(
          [this](const QString& words) { m_parts.console.print(u"[AppDelegate] A task failed: "_s + words); })
    , m_photoMechanic(
          parts.launch, parts.settings, parts.commands, parts.workspace, [this] { showMainWindow(); },
          parts.clock, parts.console)
    , m_updateNews(parts.updates, parts.pages, parts.alerts, parts.workspace, parts.clock, parts.console) {}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching(const StartRequest& request) {
    m_parts.analytics.recordLaunch();
    makeMainWindow();
    if (!m_parts.defaults.get<bool>(onboardingKey).value_or(false)) {
        showOnboardingWindow();
    } else if (request.wish == StartRequest::Wish::hide) {
        hideMainWindow();
    } else {
        showMainWindow();
    }
    carryOut(request);
    const auto ask = [](NotificationManager& notifications) -> QCoro::Task<> {
        co_await notifications.requestPermission();
    };
    m_tasks.spawn(ask(m_parts.notifications));
    m_photoMechanic.setupPhotoMechanicMonitoring();
    m_updateNews.checkSoon();
    observeEvents();
    m_autoMode.observeAutoModeSettings();
}

QCoro::Task<> AppDelegate::finished() const {
    if (m_panel) {
        co_await m_panel->finished();
    }
    if (m_settingsWindow) {
        co_await m_settingsWindow->finished();
    }
    if (m_onboardingWindow) {
        co_await m_onboardingWindow->finished();
    }
    if (m_analyticsWindow) {
        co_await m_analyticsWindow->finished();
    }
    co_await m_photoMechanic.finished();
    co_await m_updateNews.finished();
    co_await m_tasks.finished();
}

void AppDelegate::applicationShouldHandleReopen(const StartRequest& request) {
    using Wish = StartRequest::Wish;
    if (!request.activationToken.isEmpty() && QGuiApplication::platformName().startsWith(u"wayland")) {
        qputenv("XDG_ACTIVATION_TOKEN",
                request.activationToken); // the next window that Qt activates uses it up
    }
    const bool isSilent = request.wish == Wish::hide || request.wish == Wish::switchAutoMode;
    if (!isSilent || !request.files.isEmpty()) {
        showMainWindow();
    }
    carryOut(request);
}

void AppDelegate::carryOut(const StartRequest& request) {
    if (request.wish == StartRequest::Wish::captionImages) {
        m_panel->actions().selectImages();
    } else if (request.wish == StartRequest::Wish::switchAutoMode) {
        m_panel->actions().switchAutoMode();
    }
    if (!request.files.isEmpty()) {
        m_panel->actions().take(DroppedFiles::ofPaths(request.files));
    }
}

void AppDelegate::applicationWillTerminate() {
    m_photoMechanic.stop();
    m_updateNews.stop();
    if (m_mainWindow) {
        m_parts.defaults.set(placeKey, m_mainWindow->saveGeometry());
    }
}

void AppDelegate::observeEvents() {
    AppEvents& events = m_parts.events;
    connect(&events, &AppEvents::showAboutWindow, this, &AppDelegate::showAboutWindow);
    connect(&events, &AppEvents::showSettingsWindow, this, &AppDelegate::showSettingsWindow);
    connect(&events, &AppEvents::showServerSettings, this, [this] {
        showSettingsWindow();
        m_settingsWindow->showServerTab();
    });
    connect(&events, &AppEvents::showHelpWindow, this, &AppDelegate::showHelpWindow);
    connect(&events, &AppEvents::showMainWindow, this, &AppDelegate::showMainWindow);
    connect(&events, &AppEvents::showOnboardingWindow, this, &AppDelegate::showOnboardingWindow);
    connect(&events, &AppEvents::showAnalyticsWindow, this, &AppDelegate::showAnalyticsWindow);
    connect(&events, &AppEvents::photoMechanicSettingChanged, this, [this] {
        m_parts.console.print(u"[AppDelegate] Photo Mechanic setting changed"_s);
        m_photoMechanic.setupPhotoMechanicMonitoring();
    });
    connect(&m_dashboardShortcut, &DashboardShortcut::pressed, &events, &AppEvents::showAnalyticsWindow);
    // Closing the tour before its end would leave the user without any window.
    connect(qApp, &QGuiApplication::lastWindowClosed, this, [this] {
        if (!m_isHidden) {
            showMainWindow();
        }
    });
}

void AppDelegate::makeMainWindow() {
    m_mainWindow = std::make_unique<QMainWindow>();
    m_mainWindow->setObjectName(u"mainWindow"_s);
    m_mainWindow->setWindowTitle(u"Ostrelle Captions"_s);
    m_panel = new MenuContentView(m_parts);
    m_mainWindow->setCentralWidget(m_panel);
    m_mainWindow->installEventFilter(this);
    addMenus();
    restorePlace();
    m_tray = std::make_unique<TrayItem>(m_parts, m_panel->actions(), m_panel->problems());
    connect(m_tray.get(), &TrayItem::showRequested, this, &AppDelegate::showMainWindow);
    connect(m_tray.get(), &TrayItem::found, this, [this] {
        if (m_isHidden) {
            hideMainWindow(); // as wanted at a login, when the tray was not there yet
        }
    });
    connect(m_tray.get(), &TrayItem::quitRequested, this, &AppDelegate::quit);
    connect(m_tray.get(), &TrayItem::clicked, this, [this] {
        m_mainWindow->isVisible() && m_mainWindow->isActiveWindow() ? hideMainWindow() : showMainWindow();
    });
}

void AppDelegate::addMenus() {
    QMenu* program = m_mainWindow->menuBar()->addMenu(u"&Ostrelle Captions"_s);
    program->addAction(u"&About Ostrelle Captions"_s, this, &AppDelegate::showAboutWindow);
    program->addSeparator();
    QAction* settings = program->addAction(icon(IconName::settings), u"&Settings..."_s, this,
                                           &AppDelegate::showSettingsWindow);
    settings->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Comma));
    settings->setShortcutContext(Qt::ApplicationShortcut);
    QAction* updates = program->addAction(u"&Check for Updates..."_s, &m_updateNews, &UpdateNews::check);
    connect(&m_parts.updates, &UpdateChecker::canCheckForUpdatesChanged, updates,
            [this, updates] { updates->setEnabled(m_parts.updates.canCheckForUpdates()); });
    program->addSeparator();
    QAction* end = program->addAction(u"&Quit"_s, this, &AppDelegate::quit);
    end->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    end->setShortcutContext(Qt::ApplicationShortcut);

    QMenu* help = m_mainWindow->menuBar()->addMenu(u"&Help"_s);
    QAction* guide =
        help->addAction(icon(IconName::help), u"IPTC &Help"_s, this, &AppDelegate::showHelpWindow);
    guide->setShortcut(QKeySequence(Qt::Key_F1));
    guide->setShortcutContext(Qt::ApplicationShortcut);
    help->addAction(u"&Welcome Tour"_s, this, &AppDelegate::showOnboardingWindow);
    m_shortcuts = {settings, guide, end};
    addToolBar({settings, guide});
}

/// Beside the menus: a separate bar would take height from the panel.
void AppDelegate::addToolBar(const QList<QAction*>& actions) {
    auto* bar = new QToolBar(u"Toolbar"_s);
    bar->setObjectName(u"MainToolbar"_s);
    bar->setToolButtonStyle(Qt::ToolButtonIconOnly);
    bar->setIconSize(QSize(measure::iconSize, measure::iconSize));
    for (QAction* action : actions) {
        action->setIconVisibleInMenu(false);
        bar->addAction(action);
    }
    m_mainWindow->menuBar()->setCornerWidget(bar);
    bar->setAccessibleName(u"Toolbar"_s);
    adoptAccessible(*m_panel, *bar); // a menu bar tells of its menus only
}

void AppDelegate::showMainWindow() {
    if (!m_mainWindow) {
        makeMainWindow();
        return;
    }
    m_isHidden = false;
    m_mainWindow->setWindowState(m_mainWindow->windowState() & ~Qt::WindowMinimized);
    m_mainWindow->show();
    m_mainWindow->raise();
    m_mainWindow->activateWindow();
}

void AppDelegate::showAboutWindow() {
    present(m_aboutWindow, u"About Ostrelle Captions"_s, {400, 450}, Resizing::none, m_parts.workspace,
            m_parts.pages);
}

void AppDelegate::showSettingsWindow() {
    constexpr QSize size(550, 575);
    if (m_settingsWindow) {
        m_settingsWindow->resize(fitting(*m_settingsWindow, {m_settingsWindow->width(), size.height()}));
    }
    present(m_settingsWindow, u"Settings"_s, size, Resizing::free, m_parts);
    m_settingsWindow->setMinimumSize(fitting(*m_settingsWindow, {500, 400}));
}

void AppDelegate::showHelpWindow() {
    present(m_helpWindow, u"Help - IPTC Preset Guide"_s, {900, 820}, Resizing::free);
    m_helpWindow->setMinimumSize(fitting(*m_helpWindow, {900, 720}));
}

void AppDelegate::showOnboardingWindow() {
    present(m_onboardingWindow, u"Welcome to Ostrelle Captions"_s, {600, 500}, Resizing::none, m_parts);
    m_onboardingWindow->addActions(m_shortcuts); // menus of a hidden window receive no keys
}

void AppDelegate::showAnalyticsWindow() {
    present(m_analyticsWindow, u"Analytics Dashboard"_s, {800, 700}, Resizing::free, m_parts);
    m_analyticsWindow->setMinimumSize(fitting(*m_analyticsWindow, {700, 600}));
}

bool AppDelegate::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_mainWindow.get() && event->type() == QEvent::Close) {
        event->ignore();
        closeMainWindow();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

void AppDelegate::closeMainWindow() {
    if (!m_parts.settings.autoMode() || !m_tray->isThere()) {
        quit();
        return;
    }
    hideMainWindow();
    if (!m_parts.defaults.get<bool>(trayToldKey).value_or(false)) {
        m_parts.defaults.set(trayToldKey, true);
        m_tasks.spawn(tellOfTray());
    }
}

/// Where nothing would lead back to a hidden window it is minimised.
void AppDelegate::hideMainWindow() {
    m_isHidden = true;
    m_tray->isThere() ? m_mainWindow->hide() : m_mainWindow->showMinimized();
}

/// Where no notification can be shown, a dialog tells it: a window that vanishes without a word looks like a
/// crash.
QCoro::Task<> AppDelegate::tellOfTray() {
    Alert alert;
    alert.title = u"Ostrelle Captions Goes On in the Tray"_s;
    alert.text =
        u"New images are captioned while its window is closed. A click on its icon shows it again, and "
        "the icon's menu ends the program."_s;
    alert.buttons = QStringList{u"OK"_s};
    const bool isNotified = co_await m_parts.notifications.postNews(alert.title, alert.text);
    if (!isNotified) {
        co_await m_parts.alerts.show(alert);
    }
}

bool AppDelegate::isAtWork() const {
    return m_parts.settings.autoMode() || m_parts.status.isProcessing();
}

void AppDelegate::quit() {
    if (m_isAsking) {
        return;
    }
    if (isAtWork()) {
        m_tasks.spawn(askAndQuit());
        return;
    }
    m_quit();
}

QCoro::Task<> AppDelegate::askAndQuit() {
    m_isAsking = true;
    Alert alert;
    alert.title = u"Captioning is still going on"_s;
    alert.text =
        m_parts.settings.autoMode()
            ? u"New images are captioned as they arrive. If you quit, the images in the works are "
              "finished, and auto mode goes on when you start the program again."_s
            : u"If you quit, the images in the works are finished and the others are left as they are."_s;
    alert.buttons = QStringList{u"Keep Captioning in the Background"_s, u"Quit"_s, u"Cancel"_s};
    const QString answer = co_await m_parts.alerts.show(alert);
    m_isAsking = false;
    if (answer == u"Keep Captioning in the Background") {
        hideMainWindow();
    } else if (answer == u"Quit") {
        m_quit();
    }
}

void AppDelegate::restorePlace() {
    // The panel's size; the menus are above it.
    const QSize size(480, 600 + m_mainWindow->menuBar()->sizeHint().height());
    m_mainWindow->resize(fitting(*m_mainWindow, size));
    const QByteArray place = m_parts.defaults.get<QByteArray>(placeKey).value_or(QByteArray());
    if (!m_mainWindow->restoreGeometry(place)) {
        centre(m_mainWindow.get());
    }
}

} // namespace ostrelle
