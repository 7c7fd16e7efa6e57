// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/CommandProgram.h"

#include "cli/SecretInput.h"
#include "pipeline/CodeReplacements.h"
#include "platform/Patience.h"
#include "product/ApiKey.h"

#include <unistd.h>

#include <QCoroSignal>
#include <QDir>
#include <QFileInfo>
#include <QVariantList>
#include <algorithm>
#include <chrono>
#include <cstdio>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString lastFailedKey = u"commandLineFailedFiles"_s;

} // namespace

CommandProgram::CommandProgram(const Options& givenOptions, const AppFolders& folders,
                               const ServiceEndpoints& endpoints)
    : options(givenOptions)
    , defaults(folders.defaultsFile(), errors)
    , captions({.folders = folders,
                .endpoints = endpoints,
                .defaults = defaults,
                .settingsDefaults = withRunOnlyValues(),
                .secrets = m_secrets,
                .notificationCenter = m_notificationCenter,
                .alerts = m_alerts,
                .events = m_events,
                .makeStream = [this](const FtpAddress& address) { return m_streams.make(address); },
                .access = m_access,
                .clock = m_clock,
                // The pipeline's log lines are optional.
                .console = options.verbose ? static_cast<PlainLog&>(output) : m_silent,
                .errors = errors,
                .progressLinger = std::chrono::milliseconds(0)}) {}

QString CommandProgram::missingConfiguration() const {
    if (options.roster && !QFileInfo(*options.roster).isFile()) {
        return u"There is no Code Replacements file at %1."_s.arg(*options.roster);
    }
    if (options.folder && !QFileInfo(*options.folder).isDir()) {
        return u"There is no folder at %1."_s.arg(*options.folder);
    }
    if (!options.into.isEmpty() && !QFileInfo(options.into).isDir()) {
        return u"The folder %1 cannot be made."_s.arg(options.into);
    }
    if (asksNoModel()) {
        return {}; // nothing is sent, and a roster may be in the ingest folder
    }
    if (apiKey(defaults).isEmpty()) {
        return u"No API key is stored. Store it with: ostrelle-caption key"_s;
    }
    if (!hasCodeReplacementsFile(captions.settings.codeReplacementsFile(),
                                 options.folder.value_or(QString()))) {
        return u"No Code Replacements file is set. Name one with: --roster FILE"_s;
    }
    return {};
}

QCoro::Task<bool> CommandProgram::finish() {
    co_await captions.finishWork();
    rememberFailed();
    co_await defaults.finished();
    const bool isTold = std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
    if (!isTold) {
        errors.print(u"ostrelle-caption: Not all results could be written to standard output."_s);
    }
    warnOfManifest();
    co_return isTold&& captions.manifest.savingFailure().isEmpty();
}

QStringList CommandProgram::lastFailed() const {
    QStringList files;
    const QVariantList stored = defaults.get<QVariantList>(lastFailedKey).value_or(QVariantList());
    for (const QVariant& file : stored) {
        files.append(file.toString());
    }
    files.removeAll(QString());
    return files;
}

bool CommandProgram::asksNoModel() const {
    switch (options.command) {
    case Options::Command::showPrompt:
    case Options::Command::check:
    case Options::Command::undo:
    case Options::Command::forget:
    case Options::Command::report:
        return true;
    default:
        return false;
    }
}

void CommandProgram::rememberFailed() {
    if (asksNoModel()) {
        return;
    }
    constexpr qsizetype most = 10'000;
    QVariantList files;
    for (const FailedGroup& group : captions.failures.groups()) {
        for (const QString& file : group.files.first(std::min(group.files.size(), most - files.size()))) {
            files.append(QFileInfo(file).absoluteFilePath());
        }
    }
    if (!files.isEmpty()) {
        defaults.set(lastFailedKey, files);
    } else if (defaults.exists(lastFailedKey)) {
        defaults.remove(lastFailedKey);
    }
}

void CommandProgram::warnOfManifest() {
    const QString failure = captions.manifest.savingFailure();
    if (!failure.isEmpty()) {
        warn(u"Which images have been captioned could not be saved, so they may be captioned again. "_s +
             failure);
    }
}

void CommandProgram::warnOfRoster() {
    const auto roster = resolveCodeReplacementsFile(captions.settings.codeReplacementsFile(),
                                                    captions.settings.ingestFolder());
    const QString problem = roster ? rosterState(roster->path).problem : QString();
    if (!problem.isEmpty()) {
        warn(problem);
    }
}

void CommandProgram::warn(const QString& warning) {
    if (!m_warnings.contains(warning)) {
        m_warnings.insert(warning);
        errors.print(u"ostrelle-caption: Warning: "_s + warning);
    }
}

/// Puts the options in place of stored values before the settings are read. What the settings store tidies up
/// at its start is not saved: that is the desktop program's job.
DefaultsStore& CommandProgram::withRunOnlyValues() {
    const PathReferences references;
    if (options.style) {
        m_runOnly.set(u"captionStyle"_s, rawValue(*options.style));
    }
    if (options.sport) {
        m_runOnly.set(u"sport"_s, rawValue(*options.sport));
    }
    if (options.overwrite != Options::Overwrite::asSet) {
        m_runOnly.set(u"alwaysOverwriteCaptions"_s, options.overwrite == Options::Overwrite::always);
    }
    if (options.folder && QFileInfo(*options.folder).isDir()) {
        takeIngestFolder(*options.folder);
    }
    if (!options.server.isEmpty()) {
        takeServer();
    }
    if (options.roster && QFileInfo(*options.roster).isFile()) {
        m_runOnly.set(u"codeReplacementsFile"_s, references.make(*options.roster));
    }
    if (options.isRetry && !options.roster && !defaults.exists(u"codeReplacementsFile"_s)) {
        takeRosterOfFailed();
    }
    return m_runOnly;
}

/// A run over a folder may have used the folder's own.
void CommandProgram::takeRosterOfFailed() {
    const QString folder = QFileInfo(lastFailed().value(0)).path();
    if (const std::optional<QString> roster = findCodeReplacementsFile(folder)) {
        m_runOnly.set(u"codeReplacementsFile"_s, PathReferences().make(*roster));
    }
}

/// The folder replaces the user's ingest folder.
void CommandProgram::takeIngestFolder(const QString& folder) {
    const PathReferences references;
    const bool isWatching = options.command == Options::Command::watchFolder;
    m_runOnly.set(u"ingestFolder"_s, references.make(folder));
    m_runOnly.set(u"sourceType"_s, rawValue(SourceType::local));
    m_runOnly.set(u"autoMode"_s, isWatching);
}

/// The server replaces the one of the settings, which may still tell the password and the certificate of the
/// same server. Its folder is made if need be.
void CommandProgram::takeServer() {
    const PathReferences references;
    QDir().mkpath(options.into);
    const QString user = options.server.userName(QUrl::FullyDecoded);
    const bool isStored = defaults.get<QString>(u"ftpHost"_s) == options.server.host() &&
                          defaults.get<QString>(u"ftpUsername"_s) == user;
    if (isStored && !options.passwordStdin) {
        m_secrets.allowReading();
    }
    if (options.tls) { // otherwise an encryption that is stored for the server stays
        m_runOnly.set(u"ftpEncryption"_s, rawValue(FtpEncryption::explicitTls));
    } else if (!isStored) {
        m_runOnly.set(u"ftpEncryption"_s, rawValue(FtpEncryption::none));
    }
    if (!options.certificate.isEmpty() || !isStored) {
        m_runOnly.set(u"ftpTrustedCertificate"_s, options.certificate);
    }
    m_runOnly.set(u"destinationFolder"_s, references.make(QFileInfo(options.into).absoluteFilePath()));
    m_runOnly.set(u"ftpHost"_s, options.server.host());
    m_runOnly.set(u"ftpUsername"_s, user);
    m_runOnly.set(u"ftpPath"_s, options.server.path(QUrl::FullyDecoded));
    m_runOnly.set(u"ftpPort"_s,
                  qint64{options.server.port(static_cast<int>(defaultPort(TransferProtocol::ftp)))});
    m_runOnly.set(u"sourceType"_s, rawValue(SourceType::ftp));
    m_runOnly.set(u"autoMode"_s, options.command == Options::Command::watchServer);
}

QCoro::Task<bool> CommandProgram::findPassword() {
    constexpr std::chrono::seconds patience{30}; // the keyring may ask for its own password first
    if (!options.passwordStdin) {
        co_await endsWithin(passwordKnown(), captions.clock, patience);
    }
    co_return !captions.settings.ftpPassword().isEmpty() || askForPassword();
}

QCoro::Task<> CommandProgram::passwordKnown() {
    if (!captions.settings.isPasswordKnown()) {
        co_await qCoro(&captions.settings, &SettingsStore::passwordKnown);
    }
}

bool CommandProgram::askForPassword() {
    if (!options.passwordStdin) {
        if (::isatty(::fileno(stdin)) != 1) {
            errors.print(
                u"ostrelle-caption: There is no terminal to ask for the server's password on. Give it "
                "on standard input with: --password-stdin"_s);
            return false;
        }
        errors.print(u"Password of %1 on %2 (it is not shown):"_s.arg(
            options.server.userName(QUrl::FullyDecoded), options.server.host()));
    }
    const QString password = readSecret(stdin);
    if (password.isEmpty()) {
        errors.print(u"ostrelle-caption: No password was given."_s);
        return false;
    }
    captions.settings.setFtpPassword(password);
    return true;
}

} // namespace ostrelle
