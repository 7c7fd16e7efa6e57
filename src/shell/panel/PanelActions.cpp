// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panel/PanelActions.h"

#include "core/Attempt.h"
#include "core/OnThreadPool.h"
#include "pipeline/CaptionCount.h"
#include "pipeline/CodeReplacements.h"
#include "pipeline/ImageListing.h"
#include "pipeline/ManualSelection.h"
#include "platform/Patience.h"
#include "shell/desktop/OwnerWindow.h"
#include "shell/panel/KeyEntry.h"
#include "shell/panel/RosterView.h"

#include <QApplication>
#include <QFileInfo>
#include <functional>
#include <memory>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QCoro::Task<> lookWhetherFolder(QThreadPool* thread, QString path, std::shared_ptr<bool> isFolder) {
    auto look = [path] { return QFileInfo(path).isDir(); };
    *isFolder = co_await onThreadPool(thread, look);
}

QStringList imagesIn(const QString& folder) {
    QStringList files;
    const QStringList names = listImages(folder).images;
    for (const QString& name : names) {
        files.append(folder + u'/' + name);
    }
    return files;
}

using Counted = std::shared_ptr<std::optional<CaptionCount>>;

/// Counts images of one folder on its thread. A folder that does not answer, or is not there, is not counted.
QCoro::Task<> countOn(QThreadPool* thread, std::function<CaptionCount()> count, Counted result) {
    const auto counted = co_await attempt(onThreadPool(thread, count));
    if (counted && counted->images > 0) {
        *result = *counted;
    }
}

Alert uselessFileNews(const QString& path) {
    Alert alert;
    alert.title = u"File Not Used"_s;
    alert.text = u"%1 is neither a folder, nor an image, nor a text file with code replacements."_s.arg(
        QFileInfo(path).fileName());
    alert.buttons = QStringList{u"OK"_s};
    return alert;
}

/// The grant for the source folder, held until its images are captioned.
HeldAccess accessToWorkingFolder(const ShellParts& parts) {
    HeldAccess access;
    if (const std::optional<QString> folder = workingFolder(parts.settings)) {
        access.push_back(std::make_unique<ScopedAccess>(parts.access, *folder));
    }
    return access;
}

} // namespace

/// Marks a question as open, for as long as it lives.
class PanelActions::Question {
public:
    explicit Question(Self self) : m_self(self) { m_self->m_isAsking = true; }
    ~Question() {
        if (m_self) {
            m_self->m_isAsking = false;
        }
    }
    Question(const Question&) = delete;
    Question& operator=(const Question&) = delete;

private:
    Self m_self;
};

QString rosterOfFolderUsed() {
    return u"The one in the watch folder is used."_s;
}

PanelActions::PanelActions(ShellParts parts, QObject* parent)
    : QObject(parent)
    , m_parts(parts)
    , m_roster(parts.settings, parts.threads, parts.clock)
    , m_tasks([&console = parts.console](const QString& words) {
        console.print(u"[MenuContentView] An action failed: "_s + words);
    }) {
    // A run reads the roster when it starts, and may have failed to when it ends.
    connect(&parts.status, &StatusStore::isProcessingChanged, &m_roster, &RosterWatch::lookAgain);
    // A drive that is back may bring the roster.
    connect(&parts.status, &StatusStore::sourceTroubleChanged, &m_roster, &RosterWatch::lookAgain);
}

bool PanelActions::isAsking() const {
    return m_isAsking || QApplication::activeModalWidget() != nullptr;
}

void PanelActions::begin(QCoro::Task<> (*action)(Self self)) {
    if (!m_isAsking) {
        m_tasks.spawn(action(this));
    }
}

void PanelActions::turnAutoModeOn() {
    begin(&PanelActions::tryAutoMode);
}

void PanelActions::switchAutoMode() {
    if (m_parts.settings.autoMode()) {
        m_parts.settings.setAutoMode(false);
    } else {
        turnAutoModeOn();
    }
}

void PanelActions::selectImages() {
    begin(&PanelActions::askForImages);
}

void PanelActions::captionAll() {
    begin(&PanelActions::confirmAll);
}

void PanelActions::chooseWatchFolder() {
    begin(&PanelActions::askForWatchFolder);
}

void PanelActions::chooseDestinationFolder() {
    begin(&PanelActions::askForDestinationFolder);
}

void PanelActions::chooseCodeReplacements() {
    begin(&PanelActions::askForCodeReplacements);
}

void PanelActions::saveKey(const QString& entered) {
    if (!m_isAsking) {
        m_tasks.spawn(storeApiKey(m_parts, entered));
    }
}

void PanelActions::stop() {
    m_parts.settings.setAutoMode(false); // or the next scan would begin them again
    m_parts.turns.stop();
    m_parts.status.setIsPaused(m_parts.turns.isPaused());
}

void PanelActions::setPaused(bool paused) {
    m_parts.turns.setPaused(paused);
    m_parts.status.setIsPaused(m_parts.turns.isPaused());
}

void PanelActions::help(const Problem& problem, Problem::Remedy remedy) {
    using Remedy = Problem::Remedy;
    const bool isLocal = m_parts.settings.sourceType() == SourceType::local;
    switch (remedy) {
    case Remedy::tryAgain:
        if (!m_isAsking) {
            m_tasks.spawn(admitFiles(this, problem.files));
        }
        break;
    case Remedy::openSettings:
        Q_EMIT m_parts.events.showSettingsWindow();
        break;
    case Remedy::openServerSettings:
        Q_EMIT m_parts.events.showServerSettings();
        break;
    case Remedy::chooseFolder:
        isLocal ? chooseWatchFolder() : chooseDestinationFolder();
        break;
    case Remedy::chooseRoster:
        chooseCodeReplacements();
        break;
    case Remedy::openFolder:
        m_parts.workspace.openLink(QUrl::fromLocalFile(QFileInfo(problem.files.value(0)).path()));
        break;
    }
}

void PanelActions::showLog() {
    m_parts.workspace.openLink(QUrl::fromLocalFile(m_parts.log.path()));
}

void PanelActions::showRoster() {
    m_tasks.spawn(listRoster(this, m_roster.path()));
}

/// Reads the file anew: it may have been edited since it was counted.
QCoro::Task<> PanelActions::listRoster(Self self, QString path) {
    auto read = [path] { return readCodeReplacements(path); };
    const auto roster =
        co_await attempt(onThreadPool(self->m_parts.threads.of(QFileInfo(path).path()), read));
    if (!self) {
        co_return;
    }
    self->m_roster.lookAgain();
    if (roster) {
        auto* view = new RosterView(QFileInfo(path).fileName(), *roster, ownerWindow());
        view->open();
    }
}

void PanelActions::take(const DroppedFiles& files) {
    if (m_isAsking) {
        m_parts.status.setLastMessage(u"Files were not taken: answer the open question first."_s);
    } else if (files.kind == DroppedFiles::Kind::useless) {
        m_parts.status.setLastMessage(u"Files were not taken: they are no images."_s);
    } else {
        m_tasks.spawn(files.paths.size() == 1 ? takeOne(this, files) : admitDropped(this, files.paths));
    }
}

QCoro::Task<std::optional<Readiness>> PanelActions::readiness(Self self) {
    const ShellParts parts = self->m_parts;
    const bool hasRoster = co_await self->m_roster.found();
    if (!self) {
        co_return std::nullopt;
    }
    co_return Readiness::of(parts.defaults, parts.settings, hasRoster);
}

QCoro::Task<bool> PanelActions::isAdmitted(Self self) {
    const ShellParts parts = self->m_parts;
    const std::optional<Readiness> known = co_await readiness(self);
    if (!known || canProcess(*known)) {
        co_return known.has_value();
    }
    const Alert alert = configurationAlert(missingConfiguration(*known));
    co_await parts.alerts.show(alert);
    co_return false;
}

QCoro::Task<> PanelActions::tryAutoMode(Self self) {
    const Question question(self);
    const ShellParts parts = self->m_parts;
    const std::optional<Readiness> known = co_await readiness(self);
    if (!known) {
        co_return;
    }
    if (const std::optional<Alert> refusal = ostrelle::switchAutoMode(parts.settings, *known, true)) {
        co_await parts.alerts.show(*refusal);
    }
}

QCoro::Task<> PanelActions::askForImages(Self self) {
    auto question = std::make_unique<Question>(self);
    const ShellParts parts = self->m_parts;
    const bool admitted = co_await isAdmitted(self);
    if (!admitted) {
        co_return;
    }
    HeldAccess access = accessToWorkingFolder(parts);
    if (const std::optional<QString> line = imageQuestionLogLine(parts.settings)) {
        parts.console.print(*line);
    }
    const FileQuestion images = imageQuestion(parts.settings);
    const QStringList files = co_await parts.files.chooseFiles(images);
    question.reset();
    if (!files.isEmpty()) {
        co_await parts.analyzer.captionSelection(files, std::move(access), parts.workspace);
    }
}

/// A folder may have any name. When its share does not answer, the name decides.
QCoro::Task<> PanelActions::takeOne(Self self, DroppedFiles file) {
    auto question = std::make_unique<Question>(self);
    const ShellParts parts = self->m_parts;
    const QString path = file.paths.first();
    const auto isFolder = std::make_shared<bool>(file.kind == DroppedFiles::Kind::folder);
    co_await endsWithin(lookWhetherFolder(parts.threads.of(QFileInfo(path).path()), path, isFolder),
                        parts.clock, RosterWatch::patience);
    question.reset();
    if (*isFolder) {
        parts.settings.sourceType() == SourceType::local ? parts.settings.setIngestFolder(path)
                                                         : parts.settings.setDestinationFolder(path);
    } else if (file.kind == DroppedFiles::Kind::codeReplacements) {
        parts.settings.setCodeReplacementsFile(path);
    } else if (file.kind == DroppedFiles::Kind::images) {
        if (self) {
            co_await admitDropped(self, file.paths);
        }
    } else {
        const Alert refusal = uselessFileNews(path);
        co_await parts.alerts.show(refusal);
    }
}

QCoro::Task<> PanelActions::admitFiles(Self self, QStringList files) {
    auto question = std::make_unique<Question>(self);
    const ShellParts parts = self->m_parts;
    const bool admitted = co_await isAdmitted(self);
    question.reset();
    if (admitted) {
        co_await parts.analyzer.captionSelection(files, accessToWorkingFolder(parts), parts.workspace);
    }
}

QCoro::Task<> PanelActions::admitDropped(Self self, QStringList files) {
    auto question = std::make_unique<Question>(self);
    const ShellParts parts = self->m_parts;
    const bool admitted = co_await isAdmitted(self);
    const QStringList wanted = admitted ? co_await confirmDropped(parts, files) : QStringList();
    question.reset();
    if (!wanted.isEmpty()) {
        co_await parts.analyzer.captionSelection(wanted, accessToWorkingFolder(parts), parts.workspace);
    }
}

QCoro::Task<QStringList> PanelActions::confirmDropped(ShellParts parts, QStringList files) {
    const ManualSelection selection = ManualSelection::of(files);
    const auto counted = std::make_shared<std::optional<CaptionCount>>();
    auto count = [images = selection.images, zone = parts.clock.timeZone()] {
        return countCaptions(images, zone);
    };
    QThreadPool* thread = parts.threads.of(QFileInfo(files.first()).path());
    co_await endsWithin(countOn(thread, count, counted), parts.clock, RosterWatch::patience);
    const std::optional<Alert> question =
        *counted ? captionDroppedQuestion(**counted, parts.settings.alwaysOverwriteCaptions()) : std::nullopt;
    if (!question) {
        co_return files;
    }
    const QString answer = co_await parts.alerts.show(*question);
    switch (answer.isEmpty() ? 0 : question->buttons.indexOf(answer)) {
    case 1:
        co_return files;
    case 2:
        co_return (*counted)->without + selection.sidecars;
    default:
        co_return QStringList();
    }
}

QCoro::Task<> PanelActions::confirmAll(Self self) {
    auto question = std::make_unique<Question>(self);
    const ShellParts parts = self->m_parts;
    const bool admitted = co_await isAdmitted(self);
    if (!admitted) {
        co_return;
    }
    const bool isLocal = parts.settings.sourceType() == SourceType::local;
    const auto counted = std::make_shared<std::optional<CaptionCount>>();
    if (isLocal) {
        const QString folder = parts.settings.ingestFolder().value_or(QString());
        auto count = [folder, zone = parts.clock.timeZone()] {
            return countCaptions(imagesIn(folder), zone);
        };
        co_await endsWithin(countOn(parts.threads.of(folder), count, counted), parts.clock,
                            RosterWatch::patience);
    }
    const Alert confirmation = isLocal
                                   ? captionAllQuestion(*counted, parts.settings.alwaysOverwriteCaptions())
                                   : downloadAllQuestion();
    const QString answer = co_await parts.alerts.show(confirmation);
    question.reset();
    const qsizetype button = answer.isEmpty() ? 0 : confirmation.buttons.indexOf(answer);
    if (button < 1) {
        co_return;
    }
    if (isLocal) {
        co_await parts.analyzer.recaptionFolder(button == 1 ? FolderImages::all
                                                            : FolderImages::withoutCaption);
    } else {
        Q_EMIT parts.events.triggerManualFTPDownload();
    }
}

QCoro::Task<> PanelActions::askForWatchFolder(Self self) {
    const Question question(self);
    const ShellParts parts = self->m_parts;
    const FileQuestion folder{.title = u"Select Watch Folder"_s,
                              .startFolder = parts.settings.ingestFolder().value_or(QString())};
    const std::optional<QString> chosen = co_await parts.files.chooseFolder(folder);
    if (chosen) {
        parts.settings.setIngestFolder(chosen);
    }
}

QCoro::Task<> PanelActions::askForDestinationFolder(Self self) {
    const Question question(self);
    const ShellParts parts = self->m_parts;
    const FileQuestion folder{.title = u"Select Destination Folder"_s,
                              .startFolder = parts.settings.destinationFolder().value_or(QString())};
    const std::optional<QString> chosen = co_await parts.files.chooseFolder(folder);
    if (chosen) {
        parts.settings.setDestinationFolder(chosen);
    }
}

QCoro::Task<> PanelActions::askForCodeReplacements(Self self) {
    const Question question(self);
    const ShellParts parts = self->m_parts;
    const FileQuestion file{.title = u"Select Code Replacements File"_s,
                            .startFolder = workingFolder(parts.settings).value_or(QString()),
                            .extensions = {u"txt"_s},
                            .extensionsName = u"Text files"_s};
    const std::optional<QString> chosen = co_await parts.files.chooseFile(file);
    if (chosen) {
        parts.settings.setCodeReplacementsFile(chosen);
    }
}

} // namespace ostrelle
