// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SingleInstance.h"

#include <QCryptographicHash>
#include <QDir>
#include <QLocalSocket>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// A socket's path must not be long, and the folder's may be.
QString socketName(const QString& folder) {
    const QByteArray digest = QCryptographicHash::hash(folder.toUtf8(), QCryptographicHash::Sha256).toHex();
    return u"ostrelle-captions-"_s + QString::fromLatin1(digest.first(16));
}

} // namespace

SingleInstance::SingleInstance(const QString& folder)
    : m_socket(socketName(folder)), m_lock(folder + u"/ostrelle-captions.lock"_s) {
    QDir().mkpath(folder);
    m_lock.setStaleLockTime(0); // a lock goes stale only with its process, however long that runs
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&m_server, &QLocalServer::newConnection, this, [this] {
        delete m_server.nextPendingConnection();
        Q_EMIT startedAgain();
    });
}

bool SingleInstance::isFirst() {
    const bool isLocked = !m_lock.tryLock() && m_lock.error() == QLockFile::LockFailedError;
    if (isLocked && knock()) {
        return false;
    }
    listen(); // the lock of another machine, by which the home was used last, holds nobody up
    return true;
}

void SingleInstance::listen() {
    QLocalServer::removeServer(m_socket); // of an instance that was killed
    m_server.listen(m_socket);
}

bool SingleInstance::knock() const {
    constexpr int patience = 2000; // milliseconds
    QLocalSocket socket;
    socket.connectToServer(m_socket);
    return socket.waitForConnected(patience);
}

} // namespace ostrelle
