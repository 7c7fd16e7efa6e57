// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/PromptCache.h"
#include "services/PromptCacheFile.h"
#include "support/Await.h"
#include "support/FullDisk.h"
#include "support/RecordingLog.h"
#include "support/VirtualClock.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

PromptTemplates templates(const QString& text) {
    return {.commonRules = text,
            .sportInstructions = text,
            .styleRules = text,
            .fallbackInstructions = text,
            .audioInstructions = text,
            .offenseDefenseInstructions = text};
}

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

TEST(PromptCacheDisk, AFullDiskLeavesTheOldFileAndTheCacheGoesOn) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"prompt-cache.json"_s);
    const VirtualClock clock;
    RecordingLog log;
    PromptCache cache(path, clock, log);
    cache.store(u"small"_s, templates(u"Rules"_s));
    await(cache.finishPending());
    const QByteArray before = contentOf(path);
    ASSERT_EQ(readPromptCache(path).keys(), QStringList(u"small"_s));

    log.lines.clear();
    const QString longText(10'000, u'x');
    {
        const FullDisk full(static_cast<rlim_t>(before.size()));
        cache.store(u"large"_s, templates(longText));
        await(cache.finishPending());
    }
    EXPECT_EQ(log.lines,
              QStringList(u"[PromptService] Failed to save cache to disk: Could not write %1: File "
                          "too large."_s.arg(path)));
    EXPECT_EQ(contentOf(path), before);
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden).size(), 1);
    const std::optional<PromptTemplates> kept = await(cache.find(u"large"_s));
    ASSERT_TRUE(kept) << "it is still in memory";
    EXPECT_EQ(kept->commonRules, longText);

    cache.store(u"third"_s, templates(u"Rules"_s));
    await(cache.finishPending());
    EXPECT_EQ(readPromptCache(path).keys(), QStringList({u"large"_s, u"small"_s, u"third"_s}))
        << "the next save makes up for the one that failed";
}

} // namespace ostrelle
