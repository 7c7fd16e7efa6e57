// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/CommandLine.h"

#include "cli/CheckCommand.h"
#include "cli/ExitStatus.h"
#include "cli/FilesCommand.h"
#include "cli/FolderCommand.h"
#include "cli/JournalCommand.h"
#include "cli/KeyCommand.h"
#include "cli/Options.h"
#include "cli/ReportCommand.h"
#include "cli/WatchCommand.h"
#include "platform/ConsoleLog.h"
#include "product/AppFolders.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

int runCommandLine(const QStringList& arguments, const ServiceEndpoints& endpoints) {
    ConsoleLog output;
    ConsoleLog errors(stderr);
    const ParsedOptions parsed = parseOptions(arguments);
    if (!parsed.error.isEmpty()) {
        errors.print(u"ostrelle-caption: "_s + parsed.error);
        errors.print(u"Try: ostrelle-caption --help"_s);
        return ExitStatus::usageOrConfiguration;
    }
    const AppFolders folders = AppFolders::ofDesktop();
    const QString defaultsPath = folders.defaultsFile();
    switch (parsed.options.command) {
    case Options::Command::help:
        output.print(helpText().trimmed());
        return ExitStatus::success;
    case Options::Command::version:
        output.print(u"ostrelle-caption "_s + QStringLiteral(OSTRELLE_VERSION));
        return ExitStatus::success;
    case Options::Command::storeKey:
        return storeKey(defaultsPath, stdin, output, errors);
    case Options::Command::clearKey:
        return clearKey(defaultsPath, output, errors);
    case Options::Command::check:
        return runCheckCommand(parsed.options, folders, endpoints);
    case Options::Command::report:
        return runReportCommand(parsed.options, folders, endpoints);
    case Options::Command::undo:
    case Options::Command::forget:
        return runJournalCommand(parsed.options, folders, endpoints);
    case Options::Command::captionFolder:
        return runFolderCommand(parsed.options, folders, endpoints);
    case Options::Command::watchFolder:
    case Options::Command::watchServer:
    case Options::Command::downloadServer:
        return runWatchCommand(parsed.options, folders, endpoints);
    case Options::Command::caption:
    case Options::Command::showPrompt:
        break;
    }
    return runFilesCommand(parsed.options, folders, endpoints);
}

} // namespace ostrelle
