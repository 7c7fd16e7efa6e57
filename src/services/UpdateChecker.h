// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/TaskGroup.h"
#include "platform/Clock.h"
#include "platform/DefaultsStore.h"
#include "platform/PlainLog.h"
#include "services/HttpChannel.h"
#include "services/UpdateFeed.h"

#include <QCoroTask>
#include <QObject>
#include <QString>
#include <QUrl>
#include <QVersionNumber>

namespace ostrelle {

/// Where the list of versions is, as built into the program.
struct UpdateAddress {
    QUrl url = {};               ///< https; empty: updates come with the system's packages
    QByteArray publicKey = {};   ///< Ed25519, 32 bytes
    QVersionNumber current = {}; ///< of this program
};

/// What a check has found.
struct UpdateResult {
    enum class Kind { newer, current, failed };

    Kind kind = Kind::failed;
    QString version = {};
    QString notes = {};
    QString reason = {};  ///< of a failure, a sentence
    bool isAsked = false; ///< the user waits for the answer
};

/// Looks whether there is a newer version of the program, and never installs one.
class UpdateChecker : public QObject {
    Q_OBJECT

public:
    /// The references must outlive the checker.
    UpdateChecker(UpdateAddress address, DefaultsStore& defaults, Clock& clock, PlainLog& log);

    bool isBuiltIn() const { return !m_address.url.isEmpty(); }
    /// False while a check is under way.
    bool canCheckForUpdates() const { return !m_isChecking; }
    /// For the user, who has asked.
    void checkForUpdates() { begin(true); }
    /// At most once a day; tells only of a newer version.
    void checkForUpdatesInBackground();

    QCoro::Task<> finished() const { return m_tasks.finished(); }

Q_SIGNALS:
    void canCheckForUpdatesChanged();
    void checked(const ostrelle::UpdateResult& result);

private:
    void begin(bool isAsked);
    QCoro::Task<> check(bool isAsked);
    UpdateResult judge(const HttpReply& reply);

    UpdateAddress m_address;
    DefaultsStore& m_defaults;
    Clock& m_clock;
    PlainLog& m_log;
    bool m_isChecking = false;
    TaskGroup m_tasks{[](const QString&) {}}; // which do not throw
    HttpChannel m_channel;                    // last: its end fails the request that the task awaits
};

} // namespace ostrelle
