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
    /// Whether captions use the roster of the folder, as none is selected.
    bool isUsed() const;
    /// What is wrong with the roster in use, as a sentence; empty if nothing is known to be wrong.
    QString problem() const;
    /// Looks again, for example when the window becomes active: the user may have put a file there.
    void lookAgain();
    /// Looks again and resumes with the result. Resumes with isFound() if the folder does not answer, or does
    /// not matter because a roster is selected or the source is remote.
    QCoro::Task<bool> found();

Q_SIGNALS:
    void foundChanged();
    /// isUsed() or problem() may have changed.
    void useChanged();

private:
    /// A file that was examined, and what is wrong with it.
    struct Examined {
        QString path;
        QString problem;
        quint64 number = 0; // answers may arrive out of order
    };

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
    quint64 m_lastAnswer = 0; // the number of the look that m_isFound comes from
    quint64 m_examinations = 0;
    Examined m_found;
    Examined m_selected;
};

} // namespace ostrelle
