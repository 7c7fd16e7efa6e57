// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/CommandLoop.h"

#include "core/Attempt.h"

#include <QCoreApplication>
#include <QMetaObject>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QCoro::Task<> runToTheEnd(CommandProgram& program, std::function<QCoro::Task<int>()> command) {
    const auto status = co_await attempt(command());
    if (!status) {
        program.errors.print(u"ostrelle-caption: "_s + status.words());
    }
    QCoreApplication::exit(status.valueOr(ExitStatus::fileFailed));
}

} // namespace

int runCommandLoop(CommandProgram& program, std::function<QCoro::Task<int>()> command) {
    const QString missing = program.missingConfiguration();
    if (!missing.isEmpty()) {
        program.errors.print(u"ostrelle-caption: "_s + missing);
        return ExitStatus::usageOrConfiguration;
    }
    program.warnOfRoster();
    // From inside the event loop, so that a command that does not wait can end it.
    QMetaObject::invokeMethod(
        &program.captions.analyzer, [&program, command] { runToTheEnd(program, command); },
        Qt::QueuedConnection);
    return QCoreApplication::exec();
}

} // namespace ostrelle
