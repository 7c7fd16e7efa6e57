// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Gate.h"
#include "platform/Clock.h"
#include "transfer/ftp/FTPFileInfo.h"

#include <QDateTime>
#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>
#include <utility>

namespace ostrelle {

/// What the program remembers of the transfers from servers beyond one watcher. Kept in memory only.
class FetchLedger {
public:
    explicit FetchLedger(const Clock& clock) : m_clock(clock) {}

    /// Whether a poll or a full download is under way, be it of a watcher that was stopped.
    bool isBusy() const { return m_users > 0; }
    /// One of them at a time.
    QCoro::Task<std::unique_ptr<Gate::Pass>> enter() {
        ++m_users;
        return m_transfers.enter();
    }
    void leave() { --m_users; }

    /// Whether the local image has been handed on to be captioned.
    bool isHandedOn(const QString& path) const { return m_handedOn.contains(path); }
    void handOn(const QString& path) { m_handedOn.insert(path); }
    /// The image has come anew.
    void takeBack(const QString& path) { m_handedOn.remove(path); }

    /// The names that a poll has left alone, as images of them were captioned before. True if they are others
    /// than in the poll before.
    bool setLeftAlone(const QStringList& names) { return std::exchange(m_leftAlone, names) != names; }

    /// Leaves a file that could not be fetched alone for a while.
    void setAside(const FTPFileInfo& file);
    /// Whether the file has ever failed at this size.
    bool hasFailed(const FTPFileInfo& file) const;
    /// False once a minute has passed or the file has another size.
    bool isSetAside(const FTPFileInfo& file) const;
    /// Whether the file is set aside for the first time: an image waits for its sidecar that long.
    bool isWorthWaitingFor(const FTPFileInfo& file) const;

private:
    struct Failure {
        qint64 size;
        QDateTime moment;
        int count; ///< at this size
    };

    const Clock& m_clock;
    Gate m_transfers{1};
    int m_users = 0;
    QSet<QString> m_handedOn;
    QStringList m_leftAlone;
    QHash<QString, Failure> m_failures; ///< by name
};

} // namespace ostrelle
