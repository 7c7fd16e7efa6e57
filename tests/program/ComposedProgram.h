// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Alerts.h"
#include "program/CaptionProgram.h"
#include "standins/MemoryDefaults.h"
#include "standins/MemorySecrets.h"
#include "support/RecordingLog.h"
#include "support/RecordingNotifications.h"
#include "support/VirtualClock.h"

#include <gtest/gtest.h>

#include <QCoroFuture>
#include <QList>
#include <QPromise>
#include <QString>
#include <QUrl>

namespace ostrelle {

/// Alerts that a test answers beforehand, or leaves open until close().
class AnsweredAlerts : public Alerts {
public:
    QCoro::Task<int> show(Alert alert) override {
        shown.append(alert);
        if (isOpen) {
            QFuture<void> answered = m_answered.future();
            co_await answered;
        }
        co_return answer;
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
    int answer = 0; ///< the index of the button that is pressed
    bool isOpen = false;

private:
    QPromise<void> m_answered;
};

/// Sandbox grants that have to be given back.
class RecordingAccess : public FileAccess {
public:
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

/// The program below its windows, as it is composed, over stand-ins for the world outside.
struct ComposedProgram {
    /// With its files below `home`.
    ComposedProgram(const QString& home, const QUrl& model)
        : folders{.config = home + QStringLiteral("/config"),
                  .data = home + QStringLiteral("/data"),
                  .promptCache = home,
                  .manifest = home + QStringLiteral("/manifest"),
                  .cache = home + QStringLiteral("/cache"),
                  .runtime = {}}
        , endpoints{.model = model} {}

    /// What a program works with that runs here. There may be several, over the same files.
    ProgramSurroundings surroundings() {
        return {.folders = folders,
                .endpoints = endpoints,
                .defaults = defaults,
                .settingsDefaults = defaults,
                .secrets = secrets,
                .notificationCenter = notificationCenter,
                .alerts = alerts,
                .events = events,
                .remote = remote,
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
    RecordingRemote remote;
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
