// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/CheckCommand.h"

#include "cli/CheckReport.h"
#include "cli/CommandLoop.h"
#include "cli/CommandProgram.h"
#include "cli/ProgressBar.h"

#include <QCoroTask>
#include <QFileInfo>
#include <algorithm>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QCoro::Task<int> check(CommandProgram& program) {
    ProgressBar bar(stderr, !program.options.verbose);
    const QStringList files = program.options.files;
    const auto show = [&bar, &files](qsizetype index) {
        bar.show(index, files.size(), QFileInfo(files.at(index)).fileName());
    };
    const CheckedFiles checked = co_await checkFiles(program.captions.analyzerParts(), files, show);
    bar.clear();
    if (!checked.hasRoster) {
        program.warn(withoutRosterWords());
    }
    for (const CheckedFile& file : checked.files) {
        program.output.print(program.options.json ? checkJson(file) : checkText(file));
    }
    const bool isClean = std::all_of(checked.files.begin(), checked.files.end(), [](const CheckedFile& file) {
        return file.error.isEmpty() && file.findings.isEmpty();
    });
    const bool isTold = co_await program.finish();
    if (program.options.roster && !checked.hasRoster) {
        co_return ExitStatus::usageOrConfiguration; // nobody should take this for a clean bill
    }
    co_return isTold&& isClean ? ExitStatus::success : ExitStatus::fileFailed;
}

} // namespace

int runCheckCommand(const Options& options, const AppFolders& folders, const ServiceEndpoints& endpoints) {
    CommandProgram program(options, folders, endpoints);
    return runCommandLoop(program, [&program] { return check(program); });
}

} // namespace ostrelle
