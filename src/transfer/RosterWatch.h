// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Event.h"
#include "pipeline/CodeReplacements.h"
#include "platform/Clock.h"
#include "platform/FolderThreads.h"
#include "state/SettingsStore.h"

#include <QCoroTask>
#include <QObject>
#include <QPointer>
#include <QString>
#include <chrono>
#include <memory>
#include <optional>

namespace ostrelle {

/// Whether there is a roster in the watch folder, and whether the names of the one in use can be read, for a
/// view that must not wait for a network share. Looks on the threads of the folders, when the folder or
/// roster in the settings changes and whenever asked. For the thread of the event loop only.
class RosterWatch : public QObject {
    Q_OBJECT

public:
    /// How long found() waits for a folder to answer.
    static constexpr std::chrono::milliseconds patience = std::chrono::seconds(2);

    /// Looks at once. All arguments must outlive the watch.
    RosterWatch(const SettingsStore& settings, FolderThreads& threads, Clock& clock);

    /// The result of the last look at the present folder; false before the first has ended.
    bool isFound() const { return m_isFound; }
    /// Whether the present folder has not answered yet.
    bool isLooking() const { return m_settings.ingestFolder() && m_answered != m_settings.ingestFolder(); }
    /// Whether captions use the roster of the folder, as none is selected.
    bool isUsed() const;
    /// What is wrong with the roster in use, as a sentence; empty if nothing is known to be wrong.
    QString problem() const { return inUse().state.problem; }
    /// How many entries it has; 0 while that is not known.
    qsizetype entries() const { return inUse().state.entries; }
    /// Its path; empty while none is known to be in use.
    QString path() const { return inUse().path; }
    /// Looks again, for example when the window becomes active: the user may have put a file there.
    void lookAgain();
    /// Looks again and resumes with the result. Resumes with isFound() if the folder does not answer, or does
    /// not matter because a roster is selected or the source is remote.
    QCoro::Task<bool> found();

Q_SIGNALS:
    void foundChanged();
    /// isUsed(), or what is known of the roster in use, may have changed.
    void useChanged();

private:
    /// A file that was examined, and what it is like.
    struct Examined {
        QString path;
        RosterState state;
        quint64 number = 0; // answers may arrive out of order
    };

    /// Empty while nothing is known.
    Examined inUse() const;
    /// Whether a roster in the folder would be used.
    bool matters() const;
    /// Starts to look. The event happens when the answer is in.
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
    std::optional<QString> m_answered; // the folder that m_isFound is about
    quint64 m_lastAnswer = 0;          // the number of the look that m_isFound comes from
    quint64 m_examinations = 0;
    Examined m_found;
    Examined m_selected;
};

} // namespace ostrelle
