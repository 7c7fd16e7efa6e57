// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/PromptCache.h"

#include "core/Attempt.h"
#include "core/Event.h"
#include "platform/FileError.h"
#include "services/PromptCacheFile.h"

#include <algorithm>
#include <cerrno>
#include <deque>
#include <functional>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// An entry dated in the future, because the clock was set back, expires by its distance too: otherwise it
/// would last for as long as the clock was off.
bool isExpired(const CachedPrompt& entry, const QDateTime& now) {
    return std::chrono::milliseconds(std::abs(entry.fetchedAt.msecsTo(now))) > PromptCache::duration;
}

bool isMissingFile(const Attempt<CachedPrompts>& loaded) {
    const std::optional<FileError> error = loaded.failureAs<FileError>();
    return error && error->code() == ENOENT;
}

} // namespace

/// The state that work on the file needs. It lives while a file operation is running, but its references are
/// invalid once the cache is gone.
class PromptCache::State {
public:
    State(QString file, const Clock& sourceOfTime, PlainLog& lines)
        : path(std::move(file)), clock(sourceOfTime), log(lines) {}

    /// Runs the change now, or after the file is read.
    void onceLoaded(std::function<void()> change) {
        if (isLoaded) {
            change();
        } else {
            changes.push_back(std::move(change));
        }
    }

    qsizetype removeExpired() {
        const QDateTime now = clock.now();
        return entries.removeIf([&now](const auto& entry) { return isExpired(entry.value(), now); });
    }

    static QCoro::Task<> load(std::shared_ptr<State> state);
    /// Saves the entries and then logs the line, if there is one.
    static void save(const std::shared_ptr<State>& state, const QString& lineAfter = {});
    static void clearExpired(const std::shared_ptr<State>& state);

    const QString path;
    const Clock& clock;
    PlainLog& log;
    CachedPrompts entries;
    bool isOpen = true; ///< until the cache is gone
    bool isLoaded = false;
    Event loaded;
    std::optional<Event> saved; ///< while saves are running

private:
    void takeIn(const Attempt<CachedPrompts>& file);
    static QCoro::Task<> workOffSaves(std::shared_ptr<State> state);

    std::deque<std::function<void()>> changes; ///< requested before the file was read
    std::deque<QString> saves;                 ///< the log lines that follow them
};

QCoro::Task<> PromptCache::State::load(std::shared_ptr<State> state) {
    const QString path = state->path;
    auto reading = attemptOffMainThread([path] { return readPromptCache(path); });
    const Attempt<CachedPrompts> file = co_await reading;
    if (state->isOpen) {
        state->takeIn(file);
        if (file) {
            clearExpired(state);
        }
        state->isLoaded = true;
        for (const std::function<void()>& change : std::exchange(state->changes, {})) {
            change();
        }
    }
    state->changes.clear(); // which hold this state
    state->loaded.happen();
}

void PromptCache::State::takeIn(const Attempt<CachedPrompts>& file) {
    if (file) {
        entries = *file;
        log.print(u"[PromptService] Cache loaded from disk: "_s + QString::number(entries.size()) +
                  u" entries"_s);
    } else if (isMissingFile(file)) {
        log.print(u"[PromptService] No cache file found on disk"_s);
    } else {
        log.print(u"[PromptService] Failed to load cache from disk: "_s + file.words());
    }
}

void PromptCache::State::save(const std::shared_ptr<State>& state, const QString& lineAfter) {
    state->saves.push_back(lineAfter);
    if (!state->saved) {
        state->saved.emplace();
        workOffSaves(state);
    }
}

/// One save after the other, so that an older state of the entries never replaces a newer one.
QCoro::Task<> PromptCache::State::workOffSaves(std::shared_ptr<State> state) {
    while (state->isOpen && !state->saves.empty()) {
        // These entries include everything requested so far: one write serves all.
        const std::deque<QString> served = std::exchange(state->saves, {});
        auto writing = attemptOffMainThread(
            [path = state->path, entries = state->entries] { writePromptCache(path, entries); });
        const Attempt<std::monostate> written = co_await writing;
        for (const QString& lineAfter : served) {
            if (!state->isOpen) {
                break;
            }
            state->log.print(written ? u"[PromptService] Cache saved to disk"_s
                                     : u"[PromptService] Failed to save cache to disk: "_s + written.words());
            if (!lineAfter.isEmpty()) {
                state->log.print(lineAfter);
            }
        }
    }
    std::exchange(state->saved, std::nullopt)->happen();
}

void PromptCache::State::clearExpired(const std::shared_ptr<State>& state) {
    const qsizetype removed = state->removeExpired();
    if (removed > 0) {
        save(state, u"[PromptService] Cleared "_s + QString::number(removed) + u" expired cache entries"_s);
    }
}

PromptCache::PromptCache(QString path, const Clock& clock, PlainLog& log)
    : m_state(std::make_shared<State>(std::move(path), clock, log)) {
    State::load(m_state);
}

PromptCache::~PromptCache() {
    m_state->isOpen = false;
}

QCoro::Task<std::optional<PromptTemplates>> PromptCache::find(QString key) {
    const std::shared_ptr<State> state = m_state;
    co_await state->loaded.happened();
    const auto entry = state->entries.constFind(key);
    if (!state->isOpen || entry == state->entries.constEnd() || isExpired(*entry, state->clock.now())) {
        co_return std::nullopt;
    }
    co_return entry->templates;
}

void PromptCache::store(QString key, PromptTemplates templates) {
    const CachedPrompt entry{
        .templates = std::move(templates), .fetchedAt = m_state->clock.now(), .cacheKey = std::move(key)};
    m_state->onceLoaded([state = m_state, entry] {
        state->entries.insert(entry.cacheKey, entry);
        State::save(state);
    });
}

void PromptCache::clear() {
    m_state->onceLoaded([state = m_state] {
        state->entries.clear();
        State::save(state, u"[PromptService] Cache cleared"_s);
    });
}

void PromptCache::clearExpired() {
    m_state->onceLoaded([state = m_state] { State::clearExpired(state); });
}

PromptCache::Counts PromptCache::counts() const {
    const QDateTime now = m_state->clock.now();
    const auto expired = std::count_if(m_state->entries.begin(), m_state->entries.end(),
                                       [&now](const CachedPrompt& entry) { return isExpired(entry, now); });
    return {.cached = m_state->entries.size(), .expired = expired};
}

QCoro::Task<> PromptCache::finishPending() {
    const std::shared_ptr<State> state = m_state;
    co_await state->loaded.happened();
    if (state->saved) {
        co_await state->saved->happened();
    }
}

} // namespace ostrelle
