// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/JsonDefaultsStore.h"
#include "support/Await.h"
#include "support/FileFacts.h"
#include "support/RecordingLog.h"
#include "support/Unprivileged.h"

#include <gtest/gtest.h>

namespace ostrelle {

/// A store over a file in its own folder, for a user who is not root.
class JsonDefaultsStoreTest : public testing::Test {
protected:
    void write(const QByteArray& bytes) const { writeFile(path, bytes); }
    QStringList files(const QString& pattern = QStringLiteral("*")) const {
        return filesIn(folder.path(), pattern);
    }
    QVariant afterRestart(const QString& key) { return JsonDefaultsStore(path, log).value(key); }

    UnprivilegedFolder folder;
    QString path = folder.filePath(QStringLiteral("settings.json"));
    RecordingLog log;
};

} // namespace ostrelle
