// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Alerts.h"
#include "platform/Workspace.h"
#include "program/CaptionProgram.h"
#include "standins/MemoryDefaults.h"
#include "standins/MemorySecrets.h"
#include "support/RecordingLog.h"
#include "support/RecordingNotifications.h"
#include "support/VirtualClock.h"

#include <gtest/gtest.h>

#include <QCoroFuture>
#include <QCoroTask>
#include <QList>
#include <QPromise>
#include <QString>
#include <QStringList>
#include <QUrl>

namespace ostrelle {

/// Alerts with an answer prepared by the test; with isOpen they stay open until close().
class AnsweredAlerts : public Alerts {
public:
    QCoro::Task<QString> show(Alert alert) override {
        shown.append(alert);
        if (isOpen) {
            QFuture<void> answered = m_answered.future();
            co_await answered;
        }
        co_return alert.buttons.value(answer);
    }
    void close() { m_answered.finish(); }
    QStringList titles() const {
        QStringList titles;
        for (const Alert& alert : shown) {
            titles.append(alert.title);
        }
        return titles;
    }

    QList<Alert> shown;
    int answer = 0; ///< the index of the button to press
    bool isOpen = false;

private:
    QPromise<void> m_answered;
};

/// Records the sandbox grants, and expects that only held ones are given back.
class RecordingAccess : public FileAccess {
public:
    bool isSandboxed() const override { return isGranting; }
    bool begin(const QString& path) override {
        if (isGranting) {
            held.append(path);
            all.append(path);
        }
        return isGranting;
    }
    void end(const QString& path) override { EXPECT_TRUE(held.removeOne(path)); }

    QStringList held;
    QStringList all;
    bool isGranting = true;
};

class RecordingRemote : public RemoteSource {
public:
    void start() override {
        EXPECT_FALSE(isRunning);
        isRunning = true;
        ++starts;
    }
    void stop() override { isRunning = false; }

    bool isRunning = false;
    int starts = 0;
};

/// Records the links that the desktop is asked to open.
class RecordingWorkspace : public Workspace {
public:
    void openLink(const QUrl& link) override { links.append(link); }
    void bringToFront() override {}

    QList<QUrl> links;
};

/// The real composition of the program below its windows, with stand-ins for the outside world.
struct ComposedProgram {
    /// Keeps its files below `home`; `model` is the URL of the model service.
    ComposedProgram(const QString& home, const QUrl& model)
        : folders{.config = home + QStringLiteral("/config"),
                  .data = home + QStringLiteral("/data"),
                  .promptCache = home,
                  .manifest = home + QStringLiteral("/manifest"),
                  .cache = home + QStringLiteral("/cache"),
                  .runtime = {}}
        , endpoints{.model = model} {}

    /// The surroundings of a program that runs here. Several programs may share them, and so the files.
    ProgramSurroundings surroundings() {
        return {.folders = folders,
                .endpoints = endpoints,
                .defaults = defaults,
                .settingsDefaults = defaults,
                .secrets = secrets,
                .notificationCenter = notificationCenter,
                .alerts = alerts,
                .events = events,
                .makeStream = [this](const FtpAddress& address) { return makeStream(address); },
                .access = access,
                .clock = clock,
                .console = console,
                .errors = console};
    }

    const AppFolders folders;
    const ServiceEndpoints endpoints;
    VirtualClock clock;
    RecordingLog console;
    MemoryDefaults defaults;
    MemorySecrets secrets;
    RecordingAccess access;
    AnsweredAlerts alerts;
    AppEvents events;
    RecordingNotifications notificationCenter;
    RecordingRemote remote; ///< for a controller of the test's own
    FtpStreamMaker makeStream = [](const FtpAddress&) { return nullptr; };
    CaptionProgram program{surroundings()};
    SettingsStore& settings = program.settings;
    StatusStore& status = program.status;
    CaptionProgress& progress = program.progress;
    UsageTracker& usage = program.usage;
    AnalyzerLog& log = program.log;
    ProcessedFilesManifest& manifest = program.manifest;
    PromptService& prompts = program.prompts;
    NotificationManager& notifications = program.notifications;
    CaptionTurns& turns = program.turns;
    FolderThreads& threads = program.threads;
    Analyzer& analyzer = program.analyzer;
};

} // namespace ostrelle
