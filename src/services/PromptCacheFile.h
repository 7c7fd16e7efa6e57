// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "services/PromptTemplates.h"

#include <QDateTime>
#include <QMap>
#include <QString>

namespace ostrelle {

/// Templates, and when they came from the server.
struct CachedPrompt {
    PromptTemplates templates;
    QDateTime fetchedAt;
    QString cacheKey;
};

using CachedPrompts = QMap<QString, CachedPrompt>;

/// In bytes; five times all combinations of the built-in templates.
constexpr qint64 largestPromptCache = qint64{32} * 1024 * 1024;

/// Reads a cache written by writePromptCache(). Throws Error when any entry is invalid.
CachedPrompts readPromptCache(const QString& path);

/// Replaces the file, whole or not at all, and makes its folder if needed: a JSON object from key to entry,
/// with dates in whole seconds. Throws Error.
void writePromptCache(const QString& path, const CachedPrompts& entries);

} // namespace ostrelle
