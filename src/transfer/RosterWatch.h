// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Event.h"
#include "platform/Clock.h"
#include "platform/FolderThreads.h"
#include "state/SettingsStore.h"

#include <QCoroTask>
#include <QObject>
#include <QPointer>
#include <QString>
#include <chrono>
#include <memory>

namespace ostrelle {

/// Knows whether a roster lies in the watch folder, and whether the names of the one in use can be had, for a
/// view that must not wait for a network share. It looks when the settings name another folder or roster, and
/// whenever it is told to.
class RosterWatch : public QObject {
    Q_OBJECT

public:
    /// How long someone who wants to act waits for a folder's answer.
    static constexpr std::chrono::milliseconds patience = std::chrono::seconds(2);

    /// Looks at once. All arguments have to outlive the watch.
    RosterWatch(const SettingsStore& settings, FolderThreads& threads, Clock& clock);

    /// What the last look at the present folder found; false before its first has ended.
    bool isFound() const { return m_isFound; }
    /// Whether captions are made with the roster of the folder, as none is selected.
    bool isUsed() const;
    /// What is wrong with the roster in use, as a sentence; empty when nothing is known to be.
    QString problem() const;
    /// Looks again, as when the window becomes active: the user may have put a file there.
    void lookAgain();
    /// Looks again and resumes with what is found. Resumes with isFound() when the folder does not answer, or
    /// does not matter, as another roster is selected.
    QCoro::Task<bool> found();

Q_SIGNALS:
    void foundChanged();
    /// Something has changed that isUsed() or problem() depends on.
    void useChanged();

private:
    /// A file that was looked at, and what is wrong with it.
    struct Examined {
        QString path;
        QString problem;
        quint64 number = 0; // answers may come in another order than they were asked for
    };

    /// Whether a roster in the folder makes a difference.
    bool matters() const;
    /// The answer to come of a look that has begun.
    Event beginLook();
    static QCoro::Task<> look(QPointer<RosterWatch> watch, QString folder, Event answer);
    void examineSelected();
    static QCoro::Task<> examine(QPointer<RosterWatch> watch, QString path, Examined RosterWatch::* examined);
    void folderChanged();
    void selectionChanged();

    const SettingsStore& m_settings;
    FolderThreads& m_threads;
    Clock& m_clock;
    bool m_isFound = false;
    quint64 m_looks = 0;
    quint64 m_lastAnswer = 0; // the number of the look that m_isFound comes from
    quint64 m_examinations = 0;
    Examined m_found;
    Examined m_selected;
};

} // namespace ostrelle
