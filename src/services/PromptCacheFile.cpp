// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/PromptCacheFile.h"

#include "core/Error.h"
#include "core/Iso8601.h"
#include "platform/Files.h"
#include "services/PromptResponse.h"

#include <QFileInfo>
#include <QJsonDocument>
#include <optional>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

CachedPrompt entryFromJson(const JsonFields& json) {
    const std::optional<QDateTime> fetchedAt = parseIso8601(json.text(u"fetchedAt"_s));
    if (!fetchedAt) {
        throw JsonError(u"The field \""_s + json.pathOf(u"fetchedAt"_s) + u"\" is not a date."_s);
    }
    return {.templates = templatesFromJson(json.object(u"templates"_s)),
            .fetchedAt = *fetchedAt,
            .cacheKey = json.text(u"cacheKey"_s)};
}

} // namespace

CachedPrompts readPromptCache(const QString& path) {
    const JsonFields json = JsonFields::parse(readFile(path, largestPromptCache));
    CachedPrompts entries;
    for (const QString& key : json.names()) {
        entries.insert(key, entryFromJson(json.object(key)));
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
    if (bytes.size() > largestPromptCache) { // it could not be read back
        throw Error(u"The cache is larger than "_s + QString::number(largestPromptCache) + u" bytes."_s);
    }
    makeFolder(QFileInfo(path).path());
    replaceFile(path, bytes);
}

} // namespace ostrelle
