// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/TaskGroup.h"
#include "pipeline/ReadinessRules.h"
#include "shell/desktop/DroppedFiles.h"
#include "shell/panel/Problems.h"
#include "shell/panel/ShellParts.h"
#include "transfer/RosterWatch.h"

#include <QCoroTask>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <optional>

namespace ostrelle {

/// The message when no roster is selected and none is needed.
QString rosterOfFolderUsed();

/// What the user can do from the main panel: asks what needs asking, and passes the work on. Only one
/// question is open at a time. Work once started goes on without the panel.
class PanelActions : public QObject {
    Q_OBJECT

public:
    explicit PanelActions(ShellParts parts, QObject* parent = nullptr);

    /// Turns auto mode on, or shows what is missing.
    void turnAutoModeOn();
    void switchAutoMode();
    void selectImages();
    /// Takes what the user has dropped: a folder or roster as if chosen, images by the rules of a selection.
    void take(const DroppedFiles& files);
    /// Captions all images of the source, after a confirmation.
    void captionAll();
    void chooseWatchFolder();
    void chooseDestinationFolder();
    void chooseCodeReplacements();
    void saveKey(const QString& entered);
    /// Lets the images in the works finish and begins no others; turns auto mode off.
    void stop();
    /// While paused, images in the works are finished and no others begin.
    void setPaused(bool paused);
    /// Does what helps against a problem.
    void help(const Problem& problem, Problem::Remedy remedy);
    void showLog();
    /// Lists the entries of the roster in use.
    void showRoster();

    /// True while a question is open, here or elsewhere in the program.
    bool isAsking() const;

    RosterWatch& roster() { return m_roster; }

    /// Resumes when all tasks started here have ended.
    QCoro::Task<> finished() const { return m_tasks.finished(); }

private:
    using Self = QPointer<PanelActions>;
    class Question;

    static QCoro::Task<> tryAutoMode(Self self);
    static QCoro::Task<> askForImages(Self self);
    static QCoro::Task<> takeOne(Self self, DroppedFiles file);
    static QCoro::Task<> admitFiles(Self self, QStringList files);
    static QCoro::Task<> admitDropped(Self self, QStringList files);
    /// Those of the files that the user wants captioned, knowing what would be replaced.
    static QCoro::Task<QStringList> confirmDropped(ShellParts parts, QStringList files);
    static QCoro::Task<> confirmAll(Self self);
    static QCoro::Task<> listRoster(Self self, QString path);
    static QCoro::Task<> askForWatchFolder(Self self);
    static QCoro::Task<> askForDestinationFolder(Self self);
    static QCoro::Task<> askForCodeReplacements(Self self);
    /// False after it has shown what is missing.
    static QCoro::Task<bool> isAdmitted(Self self);
    /// Nothing when the panel has gone meanwhile.
    static QCoro::Task<std::optional<Readiness>> readiness(Self self);

    void begin(QCoro::Task<> (*action)(Self self));

    ShellParts m_parts;
    RosterWatch m_roster;
    TaskGroup m_tasks;
    bool m_isAsking = false;
};

} // namespace ostrelle
