// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "services/PromptTemplates.h"

#include <QDateTime>
#include <QMap>
#include <QString>

namespace ostrelle {

/// Templates and the moment they came from the server.
struct CachedPrompt {
    PromptTemplates templates;
    QDateTime fetchedAt;
    QString cacheKey;
};

using CachedPrompts = QMap<QString, CachedPrompt>;

/// In bytes. All combinations of the built-in templates are a fifth of it.
constexpr qint64 largestPromptCache = qint64{32} * 1024 * 1024;

/// Reads the cache that writePromptCache() has written. Throws Error when one entry of it is not valid.
CachedPrompts readPromptCache(const QString& path);

/// Puts the entries in the file's place, whole or not at all, making its folder where needed: a JSON object
/// from key to entry, with the dates in whole seconds. Throws Error.
void writePromptCache(const QString& path, const CachedPrompts& entries);

} // namespace ostrelle
