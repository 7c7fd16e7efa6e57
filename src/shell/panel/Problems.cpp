// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panel/Problems.h"

#include "core/Text.h"

#include <QMetaObject>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;
using Remedy = Problem::Remedy;

namespace {

QList<Remedy> remediesFor(FailedGroup::Remedy remedy) {
    switch (remedy) {
    case FailedGroup::Remedy::enterKey:
        return {Remedy::tryAgain, Remedy::openSettings};
    case FailedGroup::Remedy::openFolder:
        return {Remedy::tryAgain, Remedy::openFolder};
    case FailedGroup::Remedy::tryAgain:
        break;
    }
    return {Remedy::tryAgain};
}

Problem problemOf(const FailedGroup& group) {
    const qsizetype count = group.files.size();
    return {.words = u"%1 image%2 failed: %3"_s.arg(count).arg(plural(count)).arg(group.reason),
            .files = group.files,
            .reason = group.reason,
            .remedies = remediesFor(group.remedy),
            .isFailure = true};
}

/// What keeps auto mode, which is on, from its work.
QList<Problem> autoModeProblems(const SettingsStore& settings, const RosterWatch& roster) {
    const bool isLocal = settings.sourceType() == SourceType::local;
    QList<Problem> problems;
    if (isLocal && !settings.ingestFolder()) {
        problems.append({.words = u"No watch folder is selected."_s, .remedies = {Remedy::chooseFolder}});
    }
    if (const QString words = roster.problem(); !words.isEmpty()) {
        problems.append({.words = words, .remedies = {Remedy::chooseRoster}});
    }
    return problems;
}

} // namespace

Problems::Problems(ShellParts parts, const RosterWatch& roster, QObject* parent)
    : QObject(parent), m_parts(parts), m_roster(roster) {
    connect(&parts.failures, &FailedImages::changed, this, &Problems::lookSoon);
    connect(&parts.status, &StatusStore::sourceTroubleChanged, this, &Problems::lookSoon);
    connect(&roster, &RosterWatch::useChanged, this, &Problems::lookSoon);
    for (const auto changed : {&SettingsStore::autoModeChanged, &SettingsStore::sourceTypeChanged,
                               &SettingsStore::ingestFolderChanged}) {
        connect(&parts.settings, changed, this, &Problems::lookSoon);
    }
    look();
}

/// Many images may fail in one turn of the event loop.
void Problems::lookSoon() {
    if (!std::exchange(m_isLooking, true)) {
        QMetaObject::invokeMethod(this, &Problems::look, Qt::QueuedConnection);
    }
}

void Problems::look() {
    m_isLooking = false;
    m_list.clear();
    const SettingsStore& settings = m_parts.settings;
    if (settings.autoMode()) {
        m_list = autoModeProblems(settings, m_roster);
    }
    if (const std::optional<QString> trouble = m_parts.status.sourceTrouble()) {
        const bool isLocal = settings.sourceType() == SourceType::local;
        m_list.append(
            {.words = *trouble, .remedies = {isLocal ? Remedy::chooseFolder : Remedy::openServerSettings}});
    }
    for (const FailedGroup& group : m_parts.failures.groups()) {
        m_list.append(problemOf(group));
    }
    Q_EMIT changed();
}

} // namespace ostrelle
