// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLocalServer>
#include <QLockFile>
#include <QObject>
#include <QString>

namespace ostrelle {

/// Keeps a user from running the program twice: two would caption the same images. The first start listens on
/// a socket of its own; a second one knocks there and ends, or waits until the first has ended.
class SingleInstance : public QObject {
    Q_OBJECT

public:
    enum class Standing {
        first,  ///< this is the one that runs
        second, ///< another runs; it has been asked to come to the front
        early,  ///< another is about to end: ask again in a moment
    };

    /// `folder` holds the lock: the user's settings, of which one program has charge.
    explicit SingleInstance(const QString& folder);

    /// Where no lock can be made, as in a home that is read-only, every start counts as the first.
    Standing claim();
    /// Answers no further knock, as the program is about to end. It stays the one that runs until then.
    void close();

Q_SIGNALS:
    /// The program was started once more.
    void startedAgain();

private:
    void listen();
    void answer();
    /// Asks the other instance to come to the front; false when it has ended or is about to.
    bool knock() const;
    bool isOwnerHere() const;

    QString m_socket;
    QLockFile m_lock;
    QLocalServer m_server;
};

} // namespace ostrelle
