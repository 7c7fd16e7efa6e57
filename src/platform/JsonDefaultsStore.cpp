// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/JsonDefaultsStore.h"

#include "core/Attempt.h"
#include "platform/DefaultsFile.h"
#include "platform/TaggedJson.h"

#include <QCoroFuture>
#include <QFutureWatcher>
#include <QThreadPool>
#include <QtConcurrentRun>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// What the file holds after a save.
using Outcome = Attempt<QJsonObject>;

Outcome apply(DefaultsFile& file, const DefaultsChanges& changes) {
    try {
        return Outcome::success(file.apply(changes));
    } catch (...) {
        return Outcome::failed(std::current_exception());
    }
}

} // namespace

struct JsonDefaultsStore::State {
    State(const QString& path, PlainLog& givenLog)
        : log(givenLog), file(std::make_shared<DefaultsFile>(path)) {
        thread.setMaxThreadCount(1);
        QObject::connect(&save, &QFutureWatcherBase::finished, &save, [this] { takeSaveIn(); });
    }

    bool isAllSaved() const { return !isSaving && unsaved.isEmpty(); }
    bool isPending(const QString& key) const { return unsaved.concerns(key) || saving.concerns(key); }
    QJsonValue value(const QString& key);
    void change(const DefaultsChanges& changes);
    void refresh();
    void beginSave();
    void takeSaveIn();
    void endSave(const QString& consequence);
    void saveRest();
    void leaveFileAlone(const QString& reason);
    void tellNotice();

    PlainLog& log;
    std::shared_ptr<DefaultsFile> file; // for the save that runs, in its thread
    QJsonObject stored;                 // what the file held when it was last seen
    DefaultsChanges saving;             // those of the save that runs
    DefaultsChanges unsaved;            // those on top that no save has
    bool isSaving = false;
    QString offLimits; // why the file cannot be read; empty when it can
    QFutureWatcher<Outcome> save;
    QThreadPool thread; // not the workers' pool, where a save would wait until images are decoded
};

/// As the user sees it: the latest change on top.
QJsonValue JsonDefaultsStore::State::value(const QString& key) {
    refresh();
    return isPending(key) ? unsaved.appliedTo(saving.appliedTo(stored)).value(key) : stored.value(key);
}

void JsonDefaultsStore::State::change(const DefaultsChanges& changes) {
    refresh();
    const bool isFileSeen = offLimits.isEmpty();
    if (isFileSeen && isAllSaved() && changes.appliedTo(stored) == stored) {
        return;
    }
    unsaved.append(changes);
    beginSave();
}

/// Sees what other processes have changed, unless a save runs: the file is in its hands then, and it will
/// tell.
void JsonDefaultsStore::State::refresh() {
    takeSaveIn();
    if (isSaving) {
        return;
    }
    try {
        stored = file->load();
        offLimits.clear();
    } catch (const FileError& error) {
        leaveFileAlone(error.localizedDescription());
    }
    tellNotice();
}

void JsonDefaultsStore::State::beginSave() {
    if (isSaving) {
        return;
    }
    isSaving = true;
    saving = std::exchange(unsaved, {});
    const auto work = [ownFile = file, changes = saving] { return apply(*ownFile, changes); };
    save.setFuture(QtConcurrent::run(&thread, work));
}

/// A save that has ended is taken in by whoever comes first: the event loop, if there is one, or the next
/// call. What was changed meanwhile is for the next save.
void JsonDefaultsStore::State::takeSaveIn() {
    if (!isSaving || !save.isFinished()) {
        return;
    }
    const bool isMoreWanted = !unsaved.isEmpty();
    endSave(u"The change is kept in memory until a later one can be saved."_s);
    if (isMoreWanted) {
        beginSave();
    }
}

/// Waits for the save if it has not ended. What it could not save is unsaved again.
void JsonDefaultsStore::State::endSave(const QString& consequence) {
    const Outcome outcome = save.result();
    isSaving = false;
    DefaultsChanges changes = std::exchange(saving, {});
    tellNotice();
    if (outcome) {
        stored = *outcome;
        return;
    }
    changes.append(unsaved);
    unsaved = changes;
    if (outcome.failureAs<DefaultsFile::OffLimits>()) {
        leaveFileAlone(outcome.words());
    } else {
        log.print(u"[DefaultsStore] %1 %2"_s.arg(outcome.words(), consequence));
    }
}

/// The last of all, for a program that ends: without the event loop.
void JsonDefaultsStore::State::saveRest() {
    if (isSaving) {
        endSave(u"It is tried once more."_s);
    }
    if (!unsaved.isEmpty()) {
        beginSave();
    }
    if (isSaving) {
        endSave(u"What was changed last is lost."_s);
    }
}

/// Until it can be read, which each call tries anew. Said once.
void JsonDefaultsStore::State::leaveFileAlone(const QString& reason) {
    if (reason != std::exchange(offLimits, reason)) {
        log.print(u"[DefaultsStore] %1 Settings are kept in memory until it can be."_s.arg(reason));
    }
}

void JsonDefaultsStore::State::tellNotice() {
    if (const QString notice = file->takeNotice(); !notice.isEmpty()) {
        log.print(notice);
    }
}

JsonDefaultsStore::JsonDefaultsStore(const QString& path, PlainLog& log)
    : m_state(std::make_shared<State>(path, log)) {}

JsonDefaultsStore::~JsonDefaultsStore() {
    m_state->saveRest();
}

QVariant JsonDefaultsStore::value(const QString& key) const {
    return plainValue(m_state->value(key));
}

void JsonDefaultsStore::set(const QString& key, const QVariant& value) {
    setAll({{key, value}});
}

void JsonDefaultsStore::setAll(const QVariantMap& values) {
    DefaultsChanges changes;
    for (auto value = values.begin(); value != values.end(); ++value) {
        const QJsonValue tagged = taggedValue(*value);
        if (tagged.isUndefined()) {
            m_state->log.print(u"[DefaultsStore] The value for %1 cannot be stored, its type is %2"_s.arg(
                value.key(), QString::fromUtf8(value->typeName())));
        } else {
            changes.set(value.key(), tagged);
        }
    }
    m_state->change(changes);
}

void JsonDefaultsStore::addAll(const QVariantMap& amounts, const PeriodAmounts& ofPeriod) {
    DefaultsChanges changes;
    for (auto amount = amounts.begin(); amount != amounts.end(); ++amount) {
        changes.add(amount.key(), *amount);
    }
    if (ofPeriod.period.isValid()) {
        changes.add(ofPeriod);
    }
    m_state->change(changes);
}

bool JsonDefaultsStore::isAllSaved() const {
    return m_state->isAllSaved();
}

void JsonDefaultsStore::saveAgain() {
    if (!m_state->unsaved.isEmpty()) {
        m_state->beginSave();
    }
}

void JsonDefaultsStore::remove(const QString& key) {
    m_state->change({{key, QJsonValue::Null}});
}

QCoro::Task<bool> JsonDefaultsStore::saved(QString key) const {
    return saved(m_state, key);
}

QCoro::Task<> JsonDefaultsStore::finished() const {
    return finished(m_state);
}

QCoro::Task<bool> JsonDefaultsStore::saved(std::shared_ptr<State> state, QString key) {
    while (state->isSaving && state->isPending(key)) {
        co_await saveEnded(state);
    }
    co_return !state->isPending(key);
}

QCoro::Task<> JsonDefaultsStore::finished(std::shared_ptr<State> state) {
    while (state->isSaving) {
        co_await saveEnded(state);
    }
}

QCoro::Task<> JsonDefaultsStore::saveEnded(std::shared_ptr<State> state) {
    QFuture<Outcome> save = state->save.future();
    co_await save;
    state->takeSaveIn();
}

} // namespace ostrelle
