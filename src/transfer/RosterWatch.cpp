// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/RosterWatch.h"

#include "core/OnThreadPool.h"
#include "pipeline/CodeReplacements.h"
#include "state/Publish.h"

#include <QCoroFuture>

namespace ostrelle {

RosterWatch::RosterWatch(const SettingsStore& settings, FolderThreads& threads, Clock& clock)
    : m_settings(settings), m_threads(threads), m_clock(clock) {
    connect(&settings, &SettingsStore::ingestFolderChanged, this, &RosterWatch::folderChanged);
    connect(&settings, &SettingsStore::codeReplacementsFileChanged, this, &RosterWatch::useChanged);
    connect(&settings, &SettingsStore::sourceTypeChanged, this, &RosterWatch::useChanged);
    connect(this, &RosterWatch::foundChanged, this, &RosterWatch::useChanged);
    lookAgain();
}

bool RosterWatch::isUsed() const {
    return m_isFound && matters();
}

bool RosterWatch::matters() const {
    return !m_settings.codeReplacementsFile() && m_settings.sourceType() == SourceType::local;
}

void RosterWatch::lookAgain() {
    beginLook();
}

QCoro::Task<bool> RosterWatch::found() {
    if (!matters()) {
        co_return m_isFound; // need not be waited for
    }
    const QPointer<RosterWatch> self(this);
    const Answer answer = beginLook();
    const auto timer = m_clock.after(patience, [answer] { answer->finish(); });
    QFuture<void> answered = answer->future();
    co_await answered;
    co_return self && self->m_isFound;
}

RosterWatch::Answer RosterWatch::beginLook() {
    auto answer = std::make_shared<QPromise<void>>();
    answer->start();
    if (m_settings.ingestFolder()) {
        look(this, *m_settings.ingestFolder(), answer);
    } else {
        answer->finish();
    }
    return answer;
}

QCoro::Task<> RosterWatch::look(QPointer<RosterWatch> watch, QString folder, Answer answer) {
    auto find = [folder] { return findCodeReplacementsFile(folder).has_value(); };
    const bool isFound = co_await onThreadPool(watch->m_threads.of(folder), find);
    if (watch && watch->m_settings.ingestFolder() == folder) {
        publish(watch.data(), watch->m_isFound, isFound, &RosterWatch::foundChanged);
    }
    answer->finish();
}

/// What was found in the other folder is not true of this one.
void RosterWatch::folderChanged() {
    publish(this, m_isFound, false, &RosterWatch::foundChanged);
    lookAgain();
}

} // namespace ostrelle
