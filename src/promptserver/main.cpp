// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/Error.h"
#include "platform/ConsoleLog.h"
#include "product/ServiceEndpoints.h"
#include "promptserver/PromptServer.h"
#include "promptserver/ServerOptions.h"
#include "promptserver/TemplateFolder.h"
#include "promptserver/TemplateMaker.h"

#include <QCoreApplication>
#include <csignal>
#include <memory>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

enum ExitStatus { success = 0, cannotServe = 1, wrongUsage = 2 };

/// Blocks the signals that end the program in this thread and all threads started later.
sigset_t blockedEndSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGHUP);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

TemplateSource templateSource(const QString& folder, PlainLog& log) {
    if (folder.isEmpty()) {
        return builtInTemplates();
    }
    const auto files = std::make_shared<TemplateFolder>(folder, builtInTemplateTexts(), log);
    return [files](const PromptQuery& query) { return makeTemplates(query, PromptLibrary(files->texts())); };
}

void serve(const ServerOptions& options, PlainLog& log) {
    const sigset_t endSignals = blockedEndSignals();
    const QString key =
        options.keyFile.isEmpty() ? ServiceEndpoints::builtIn().promptKey : readKeyFile(options.keyFile);
    const PromptServer server({.address = options.address, .port = options.port, .apiKey = key},
                              templateSource(options.templateFolder, log));
    if (key.isEmpty()) {
        log.print(u"[PromptServer] There is no key: whoever reaches this address is served."_s);
    }
    log.print(u"[PromptServer] Serving "_s + server.url().toString() + u"/api/prompt"_s);
    int received = 0;
    sigwait(&endSignals, &received);
    log.print(u"[PromptServer] Stopped."_s);
}

} // namespace

} // namespace ostrelle

int main(int argc, char** argv) {
    using namespace ostrelle;
    const QCoreApplication application(argc, argv);
    ConsoleLog output;
    ConsoleLog errors(stderr);
    ServerOptions options;
    try {
        options = parseServerOptions(QCoreApplication::arguments().sliced(1));
    } catch (const Error& error) {
        errors.print(u"ostrelle-prompt-server: "_s + error.localizedDescription());
        errors.print(u"Try: ostrelle-prompt-server --help"_s);
        return wrongUsage;
    }
    try {
        switch (options.command) {
        case ServerOptions::Command::help:
            output.print(serverHelpText().trimmed());
            break;
        case ServerOptions::Command::version:
            output.print(u"ostrelle-prompt-server "_s + QStringLiteral(OSTRELLE_VERSION));
            break;
        case ServerOptions::Command::serve:
            serve(options, output);
            break;
        }
    } catch (const Error& error) {
        errors.print(u"ostrelle-prompt-server: "_s + error.localizedDescription());
        return cannotServe;
    }
    return success;
}
