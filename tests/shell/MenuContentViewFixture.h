// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/ViewTest.h"
#include "shell/panel/MenuContentView.h"
#include "support/FileFacts.h"

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
        writeFile(world.folder.filePath(name), {});
        return world.folder.filePath(name);
    }
};

} // namespace ostrelle
