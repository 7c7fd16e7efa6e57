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

/// Prompt templates, each kept for an hour from its fetch: in memory, and in a file for the next run. What
/// is asked of it before the file is read happens right after. A failure with the file is logged and costs
/// nothing but the file.
class PromptCache {
public:
    /// An entry of exactly this age is still used.
    static constexpr std::chrono::milliseconds duration = std::chrono::hours(1);

    struct Counts {
        qsizetype cached = 0; ///< the expired ones too
        qsizetype expired = 0;
    };

    /// Begins to read the file, which need not exist, and removes what is expired. Clock and log must outlive
    /// the cache.
    PromptCache(QString path, const Clock& clock, PlainLog& log);
    /// What is not saved by then is not saved. See finishPending().
    ~PromptCache();
    PromptCache(const PromptCache&) = delete;
    PromptCache& operator=(const PromptCache&) = delete;

    /// The templates under the key unless they are expired, once the file is read.
    QCoro::Task<std::optional<PromptTemplates>> find(QString key);
    /// Keeps the templates from now on for an hour.
    void store(QString key, PromptTemplates templates);
    void clear();
    void clearExpired();

    /// As of now; nothing before the file is read.
    Counts counts() const;
    /// Ends when all that was asked for so far is saved. To be awaited before the program ends.
    QCoro::Task<> finishPending();

private:
    class State;

    std::shared_ptr<State> m_state;
};

} // namespace ostrelle
