// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/RosterWatch.h"

#include "core/OnThreadPool.h"
#include "state/Publish.h"

#include <QFileInfo>
#include <QThreadPool>
#include <optional>
#include <utility>

namespace ostrelle {

RosterWatch::RosterWatch(const SettingsStore& settings, FolderThreads& threads, Clock& clock)
    : m_settings(settings), m_threads(threads), m_clock(clock) {
    connect(&settings, &SettingsStore::ingestFolderChanged, this, &RosterWatch::folderChanged);
    connect(&settings, &SettingsStore::codeReplacementsFileChanged, this, &RosterWatch::selectionChanged);
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

RosterWatch::Examined RosterWatch::inUse() const {
    if (const std::optional<QString> selected = m_settings.codeReplacementsFile()) {
        return m_selected.path == *selected ? m_selected : Examined();
    }
    return isUsed() ? m_found : Examined();
}

void RosterWatch::lookAgain() {
    beginLook();
    examineSelected();
}

QCoro::Task<bool> RosterWatch::found() {
    if (!matters()) {
        co_return m_isFound; // makes no difference: no need to wait
    }
    const QPointer<RosterWatch> self(this);
    const Event answer = beginLook();
    const auto timer = m_clock.after(patience, [answer] { answer.happen(); });
    co_await answer.happened();
    co_return self && self->m_isFound;
}

Event RosterWatch::beginLook() {
    const Event answer;
    if (m_settings.ingestFolder()) {
        look(this, *m_settings.ingestFolder(), answer);
    } else {
        answer.happen();
    }
    return answer;
}

QCoro::Task<> RosterWatch::look(QPointer<RosterWatch> watch, QString folder, Event answer) {
    const quint64 number = ++watch->m_looks;
    auto find = [folder] { return findCodeReplacementsFile(folder); };
    const std::optional<QString> found = co_await onThreadPool(watch->m_threads.of(folder), find);
    if (watch && watch->m_settings.ingestFolder() == folder && watch->m_lastAnswer < number) {
        watch->m_lastAnswer = number;
        const bool isFirst = std::exchange(watch->m_answered, folder) != folder;
        publish(watch.data(), watch->m_isFound, found.has_value(), &RosterWatch::foundChanged);
        if (isFirst) {
            Q_EMIT watch->useChanged();
        }
        if (found) {
            examine(watch, *found, &RosterWatch::m_found);
        }
    }
    answer.happen();
}

void RosterWatch::examineSelected() {
    if (const std::optional<QString> selected = m_settings.codeReplacementsFile()) {
        examine(this, *selected, &RosterWatch::m_selected);
    }
}

QCoro::Task<> RosterWatch::examine(QPointer<RosterWatch> watch, QString path,
                                   Examined RosterWatch::* examined) {
    const quint64 number = ++watch->m_examinations;
    auto read = [path, number] { return Examined{path, rosterState(path), number}; };
    QThreadPool* thread = watch->m_threads.of(QFileInfo(path).path());
    const Examined answer = co_await onThreadPool(thread, read);
    if (watch && (watch.data()->*examined).number < number) {
        watch.data()->*examined = answer;
        Q_EMIT watch->useChanged();
    }
}

void RosterWatch::selectionChanged() {
    examineSelected();
    Q_EMIT useChanged();
}

/// The result for the old folder does not hold for the new one.
void RosterWatch::folderChanged() {
    publish(this, m_isFound, false, &RosterWatch::foundChanged);
    lookAgain();
}

} // namespace ostrelle
