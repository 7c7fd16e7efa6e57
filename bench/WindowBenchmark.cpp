// SPDX-License-Identifier: GPL-3.0-or-later
// Runs the desktop program on a folder of pictures and works its window as a photographer would: bench_window
// FOLDER. Clicks "Caption All Local Images", and during the run another thread keeps clicking; measures the
// time from each click to its response. The script `window` beside this file fills the folder.
#include "app/DesktopProgram.h"
#include "core/Error.h"
#include "pipeline/ImageListing.h"
#include "product/ApiKey.h"
#include "shell/toolkit/Theme.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QMessageBox>
#include <QMouseEvent>
#include <QTabBar>
#include <QTemporaryDir>
#include <QThread>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <exception>
#include <optional>

#include "ModelThread.h"

namespace ostrelle {
namespace {

using namespace Qt::StringLiterals;

AppFolders foldersIn(const QString& home) {
    return {.config = home + u"/config"_s,
            .data = home + u"/data"_s,
            .promptCache = home + u"/prompts"_s,
            .manifest = home + u"/manifest"_s,
            .cache = home + u"/cache"_s,
            .runtime = {}};
}

/// The settings a photographer would have made.
void storeSettings(const AppFolders& folders, const QString& folder) {
    SilentLog log;
    JsonDefaultsStore defaults(folders.defaultsFile(), log);
    const PathReferences references;
    defaults.setAll({{u"hasCompletedOnboarding"_s, true},
                     {apiKeyName, ModelThread::key()},
                     {u"ingestFolder"_s, references.make(folder)}});
}

template <typename Condition>
void wait(const Condition& condition) {
    while (!condition()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

QWidget* widget(const QString& name) {
    const QWidgetList all = QApplication::allWidgets();
    const auto found = std::ranges::find(all, name, &QWidget::objectName);
    if (found == all.end()) {
        throw Error(u"The window has no "_s + name);
    }
    return *found;
}

void click(QWidget* target, QPoint place) {
    for (const auto type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
        const auto held = type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton;
        QMouseEvent event(type, place, target->mapToGlobal(place), Qt::LeftButton, held, Qt::NoModifier);
        QApplication::sendEvent(target, &event);
    }
}

/// Answers the open question with its last button.
void agree() {
    QMessageBox* question = nullptr;
    wait([&question] {
        question = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        return question != nullptr;
    });
    QAbstractButton* yes = question->buttons().last();
    click(yes, yes->rect().center());
}

/// The times from clicks to the repaints that answer them, in milliseconds. Another thread sends the clicks,
/// as a display server would, so that they wait while the main thread is busy.
class Clicks : public QObject {
public:
    Clicks() { qApp->installEventFilter(this); }

    /// On the main thread. Each target is clicked where it repaints in response.
    void receive(qint64 sentAt) {
        struct Target {
            QString name;
            std::optional<int> tab;
        };
        static const Target targets[] = {{u"prioritizeAudioFiles"_s, {}},  {u"settingsTabs"_s, 1},
                                         {u"useTeamIdentification"_s, {}}, {u"settingsTabs"_s, 3},
                                         {u"prioritizeAudioFiles"_s, {}},  {u"settingsTabs"_s, 0},
                                         {u"useTeamIdentification"_s, {}}, {u"settingsTabs"_s, 2}};
        const Target& next = targets[static_cast<size_t>(m_count++) % std::size(targets)];
        QWidget* target = widget(next.name);
        m_unanswered.append({target, sentAt});
        const auto* bar = qobject_cast<QTabBar*>(target);
        click(target, bar ? bar->tabRect(*next.tab).center() : target->rect().center());
    }

    qint64 now() const { return m_clock.nsecsElapsed(); }
    int count() const { return m_count; }
    /// In ascending order.
    QList<double> answers() const {
        QList<double> sorted = m_answers;
        std::ranges::sort(sorted);
        return sorted;
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint) {
            m_unanswered.removeIf([this, watched](const Sent& click) {
                if (click.target == watched) {
                    m_answers.append(static_cast<double>(now() - click.at) / 1e6);
                }
                return click.target == watched;
            });
        }
        return QObject::eventFilter(watched, event);
    }

private:
    struct Sent {
        const QWidget* target;
        qint64 at;
    };

    QElapsedTimer m_clock = [] {
        QElapsedTimer clock;
        clock.start();
        return clock;
    }();
    int m_count = 0;
    QList<Sent> m_unanswered; ///< whose targets have not repainted since
    QList<double> m_answers;
};

/// Clicks ten times a second.
class Clicker : public QThread {
public:
    explicit Clicker(Clicks& clicks) : m_clicks(clicks) {}
    ~Clicker() override {
        m_isTired = true;
        QThread::wait();
    }

    void run() override {
        while (!m_isTired) {
            msleep(100);
            Clicks* clicks = &m_clicks; // which may still get to it after the clicking has ended
            QMetaObject::invokeMethod(clicks, [clicks, sentAt = clicks->now()] { clicks->receive(sentAt); });
        }
    }

private:
    Clicks& m_clicks;
    std::atomic<bool> m_isTired = false;
};

void printAnswers(const Clicks& clicks) {
    const QList<double> answers = clicks.answers();
    if (answers.isEmpty()) {
        throw Error(u"No click was answered."_s);
    }
    const auto late = std::ranges::count_if(answers, [](double milliseconds) { return milliseconds > 50; });
    std::fprintf(stderr, "  clicks, and those answered                %10d, %lld\n", clicks.count(),
                 static_cast<long long>(answers.size()));
    std::fprintf(stderr, "  from a click to its painting, median      %10.1f ms\n",
                 answers[answers.size() / 2]);
    std::fprintf(stderr, "  99 of 100 within                          %10.1f ms\n",
                 answers[answers.size() * 99 / 100]);
    std::fprintf(stderr, "  the worst                                 %10.1f ms   at most 50 ms  %s\n",
                 answers.last(), answers.last() <= 50 && answers.size() == clicks.count() ? "met" : "MISSED");
    std::fprintf(stderr, "  later than 50 ms                          %10lld\n",
                 static_cast<long long>(late));
}

int run(const QString& folder) {
    const qsizetype images = listImages(folder).images.size();
    const QTemporaryDir home;
    const AppFolders folders = foldersIn(home.path());
    storeSettings(folders, folder);
    ModelThread model(std::chrono::milliseconds(0));
    DesktopProgram program(folders, {.model = model.url()});
    program.delegate().applicationDidFinishLaunching();
    program.delegate().showSettingsWindow();

    QElapsedTimer timer;
    timer.start();
    QWidget* captionAll = widget(u"captionAll"_s);
    click(captionAll, captionAll->rect().center());
    agree();
    wait([captionAll] { return !captionAll->isEnabled(); }); // the run has started
    Clicks clicks;
    {
        Clicker clicker(clicks);
        clicker.start();
        wait([captionAll] { return captionAll->isEnabled(); });
    }
    std::fprintf(stderr, "%lld images from the window in %.1f s, %lld requests\n",
                 static_cast<long long>(images), static_cast<double>(timer.elapsed()) / 1e3,
                 static_cast<long long>(model.requests()));
    printAnswers(clicks);
    QMetaObject::invokeMethod(&program.delegate(), &AppDelegate::quit, Qt::QueuedConnection);
    return QApplication::exec();
}

} // namespace
} // namespace ostrelle

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    if (QCoreApplication::arguments().size() != 2) {
        std::fputs("Usage: bench_window FOLDER\n", stderr);
        return 2;
    }
    try {
        ostrelle::applyTheme(*qApp);
        return ostrelle::run(QDir(QCoreApplication::arguments().at(1)).absolutePath());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_window: %s\n", error.what());
        return 1;
    }
}
