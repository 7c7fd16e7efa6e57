// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"
#include "platform/PlainLog.h"
#include "services/PromptTemplates.h"

#include <QCoroTask>
#include <QString>
#include <chrono>
#include <memory>
#include <optional>

namespace ostrelle {

/// Prompt templates, each kept in memory and in a file for an hour after its fetch. Operations requested
/// before the file is read run right after. A file error is logged and costs only the file.
class PromptCache {
public:
    /// An entry of exactly this age is still used.
    static constexpr std::chrono::milliseconds duration = std::chrono::hours(1);

    struct Counts {
        qsizetype cached = 0; ///< including the expired ones
        qsizetype expired = 0;
    };

    /// Starts to read the file, which need not exist, and removes expired entries. Clock and log must outlive
    /// the cache.
    PromptCache(QString path, const Clock& clock, PlainLog& log);
    /// Drops whatever is not saved yet. See finishPending().
    ~PromptCache();
    PromptCache(const PromptCache&) = delete;
    PromptCache& operator=(const PromptCache&) = delete;

    /// The templates under the key unless they are expired, once the file is read.
    QCoro::Task<std::optional<PromptTemplates>> find(QString key);
    /// Keeps the templates for an hour from now.
    void store(QString key, PromptTemplates templates);
    void clear();
    void clearExpired();

    /// The current counts; zero before the file is read.
    Counts counts() const;
    /// Resumes when everything requested so far is saved. Await it before the program ends.
    QCoro::Task<> finishPending();

private:
    class State;

    std::shared_ptr<State> m_state;
};

} // namespace ostrelle
