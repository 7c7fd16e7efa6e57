// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/PromptCacheFile.h"

#include "core/Error.h"
#include "core/Iso8601.h"
#include "platform/Files.h"
#include "services/PromptResponse.h"

#include <QFileInfo>
#include <QJsonDocument>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

CachedPrompt entryFromJson(const QJsonObject& json, const QString& key) {
    const std::optional<QDateTime> fetchedAt = parseIso8601(requiredText(json, u"fetchedAt"_s, key));
    if (!fetchedAt) {
        throw Error(u"The field \""_s + key + u".fetchedAt\" is not a date."_s);
    }
    const QJsonObject templates = requiredObject(json, u"templates"_s, key);
    return {.templates = templatesFromJson(templates, key + u".templates"_s),
            .fetchedAt = *fetchedAt,
            .cacheKey = requiredText(json, u"cacheKey"_s, key)};
}

} // namespace

CachedPrompts readPromptCache(const QString& path) {
    const QJsonObject json = parseObject(readFile(path, largestPromptCache));
    CachedPrompts entries;
    for (const QString& key : json.keys()) {
        entries.insert(key, entryFromJson(requiredObject(json, key, {}), key));
    }
    return entries;
}

void writePromptCache(const QString& path, const CachedPrompts& entries) {
    QJsonObject json;
    for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
        json.insert(entry.key(), QJsonObject{{u"templates"_s, toJson(entry->templates)},
                                             {u"fetchedAt"_s, formatIso8601(entry->fetchedAt)},
                                             {u"cacheKey"_s, entry->cacheKey}});
    }
    const QByteArray bytes = QJsonDocument(json).toJson(QJsonDocument::Compact);
    if (bytes.size() > largestPromptCache) { // it could not be read again
        throw Error(u"The cache is larger than "_s + QString::number(largestPromptCache) + u" bytes."_s);
    }
    makeFolder(QFileInfo(path).path());
    replaceFile(path, bytes);
}

} // namespace ostrelle
