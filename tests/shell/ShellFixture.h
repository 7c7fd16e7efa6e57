// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "program/ComposedProgram.h"
#include "shell/panel/ShellParts.h"
#include "support/RecordedCommands.h"

#include <QTemporaryDir>

namespace ostrelle {

/// A chooser with an answer prepared by the test.
class ScriptedFileChooser : public FileChooser {
public:
    QCoro::Task<std::optional<QString>> chooseFolder(FileQuestion question) override { return one(question); }
    QCoro::Task<std::optional<QString>> chooseFile(FileQuestion question) override { return one(question); }
    QCoro::Task<QStringList> chooseFiles(FileQuestion question) override {
        asked.append(question);
        co_return answer;
    }

    QList<FileQuestion> asked;
    QStringList answer; ///< empty: the user cancels

private:
    QCoro::Task<std::optional<QString>> one(FileQuestion question) {
        asked.append(question);
        co_return answer.isEmpty() ? std::nullopt : std::optional(answer.first());
    }
};

struct ShellFolder {
    QTemporaryDir folder;
};

/// What the views are given, over stand-ins for the outside world; no model answers.
struct ShellWorld : ShellFolder, ComposedProgram {
    ShellWorld() : ComposedProgram(folder.path(), QUrl(QStringLiteral("http://127.0.0.1:9"))) {}

    bool isTrayThere = false;
    ScriptedFileChooser files;
    RecordingWorkspace workspace;
    RecordedCommands commands;
    UpdateChecker updates{{}, defaults, clock, console};
    ShellParts parts{.settings = settings,
                     .status = status,
                     .usage = usage,
                     .analytics = program.analytics,
                     .history = program.history,
                     .defaults = defaults,
                     .prompts = prompts,
                     .keyCheck = program.keyCheck,
                     .updates = updates,
                     .analyzer = analyzer,
                     .failures = program.failures,
                     .log = log,
                     .turns = turns,
                     .notifications = notifications,
                     .threads = threads,
                     .access = access,
                     .files = files,
                     .alerts = alerts,
                     .events = events,
                     .workspace = workspace,
                     .commands = commands,
                     .clock = clock,
                     .console = console,
                     .connectionTest = {},
                     .launch = {.helper = {},
                                .program = QStringLiteral("/opt/a program/ostrelle-captions"),
                                .config = folder.filePath(QStringLiteral("xdg-config"))},
                     .hasTray = [this] { return isTrayThere; }};
};

} // namespace ostrelle
