// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/ViewTest.h"
#include "shell/panel/MenuContentView.h"

#include <QFile>

namespace ostrelle {

class MenuContentViewTest : public ViewTest<MenuContentView> {
protected:
    MenuContentViewTest() : ViewTest(QSize(480, 600)) {}

    void configure(bool key, bool folder, bool roster) {
        world.defaults.set(QStringLiteral("OPENAI_API_KEY"), key ? QStringLiteral("key") : QString());
        const auto path = folder ? std::optional(world.folder.path()) : std::nullopt;
        world.settings.setIngestFolder(path);
        world.settings.setDestinationFolder(path);
        world.settings.setCodeReplacementsFile(roster ? std::optional(QStringLiteral("/nowhere/roster.txt"))
                                                      : std::nullopt);
    }
    QString touch(const QString& name) {
        QFile file(world.folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        return file.fileName();
    }
};

} // namespace ostrelle
