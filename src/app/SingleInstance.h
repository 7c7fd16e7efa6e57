// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLocalServer>
#include <QLockFile>
#include <QObject>
#include <QString>

namespace ostrelle {

/// Keeps a user from running the program twice: two would caption the same images. The first start listens on
/// a socket of its own; a second one knocks there and ends.
class SingleInstance : public QObject {
    Q_OBJECT

public:
    /// `folder` holds the lock: the user's settings, of which one program has charge.
    explicit SingleInstance(const QString& folder);

    /// False when another instance runs; it has been asked to come to the front. Where no lock can be made,
    /// as in a home that is read-only, every start counts as the first.
    bool isFirst();

Q_SIGNALS:
    /// The program was started once more.
    void startedAgain();

private:
    void listen();
    /// Asks the other instance to come to the front; false when none answers.
    bool knock() const;

    QString m_socket;
    QLockFile m_lock;
    QLocalServer m_server;
};

} // namespace ostrelle
