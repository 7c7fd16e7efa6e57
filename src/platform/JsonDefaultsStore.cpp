// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/JsonDefaultsStore.h"

#include "core/Attempt.h"
#include "platform/DefaultsFile.h"
#include "platform/TaggedJson.h"

#include <QCoroFuture>
#include <QFutureWatcher>
#include <QThreadPool>
#include <QtConcurrentRun>
#include <exception>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// The contents of the file after a save.
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
    std::shared_ptr<DefaultsFile> file; // used by the running save, on its thread
    QJsonObject stored;                 // what the file held when last read
    DefaultsChanges saving;             // the changes of the running save
    DefaultsChanges unsaved;            // later changes, in no save yet
    bool isSaving = false;
    QString offLimits; // why the file cannot be read; empty when it can
    QFutureWatcher<Outcome> save;
    QThreadPool thread; // not the workers' pool, where a save would wait behind the decoding of images
};

/// The value the user sees: unsaved changes override stored ones.
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

/// Picks up changes by other processes, except during a save, which uses the file and returns them anyway.
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

/// Takes in a finished save: from the event loop if there is one, otherwise from the next call. Changes made
/// meanwhile go into the next save.
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

/// Waits for the save if it is still running. What it could not save counts as unsaved again.
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

/// The final save at the end of the program, without the event loop.
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

/// Until the file can be read, which each call tries again. Logged once.
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
