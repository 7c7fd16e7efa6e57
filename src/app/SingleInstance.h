// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "product/StartRequest.h"

#include <QLocalServer>
#include <QLockFile>
#include <QObject>
#include <QString>

namespace ostrelle {

/// Keeps a user from running the program twice, as both would caption the same images. The first instance
/// listens on a socket; a second one knocks there and ends, or waits until the first has ended.
class SingleInstance : public QObject {
    Q_OBJECT

public:
    enum class Standing {
        first,  ///< this is the running instance
        second, ///< another runs; it was asked to come to the front
        early,  ///< another is about to end: ask again in a moment
    };

    /// `folder` holds the lock: that of the user's settings, which only one program may manage.
    /// The request is handed to the running instance, should this be the second.
    explicit SingleInstance(const QString& folder, const StartRequest& request = {});

    /// Where no lock can be made, as in a read-only home, every start counts as the first.
    Standing claim();
    /// Stops answering knocks, as the program is about to end. It remains the running instance until then.
    void close();

Q_SIGNALS:
    /// The user has started the program again, and wants this.
    void startedAgain(const ostrelle::StartRequest& request);

private:
    void listen();
    void answer();
    /// Hands the request to the other instance; false when it has ended or is about to.
    bool knock() const;
    bool isOwnerHere() const;

    QString m_socket;
    StartRequest m_request;
    QLockFile m_lock;
    QLocalServer m_server;
};

} // namespace ostrelle
