// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SingleInstance.h"

#include <QCryptographicHash>
#include <QDir>
#include <QLocalSocket>
#include <QSysInfo>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// A socket's path must be short; the folder's may not be.
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
    connect(&m_server, &QLocalServer::newConnection, this, &SingleInstance::answer);
}

SingleInstance::Standing SingleInstance::claim() {
    const bool isLocked = !m_lock.tryLock() && m_lock.error() == QLockFile::LockFailedError;
    if (isLocked && knock()) {
        return Standing::second;
    }
    if (isLocked && isOwnerHere()) {
        return Standing::early;
    }
    listen(); // a lock left by another machine that last used the home stops nobody
    return Standing::first;
}

void SingleInstance::close() {
    m_server.close();
}

void SingleInstance::listen() {
    QLocalServer::removeServer(m_socket); // left by an instance that was killed
    m_server.listen(m_socket);
}

void SingleInstance::answer() {
    QLocalSocket* socket = m_server.nextPendingConnection();
    connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
    socket->write("here");
    socket->disconnectFromServer(); // after it is written
    Q_EMIT startedAgain();
}

bool SingleInstance::knock() const {
    constexpr int patience = 2000; // milliseconds
    QLocalSocket socket;
    socket.connectToServer(m_socket);
    if (!socket.waitForConnected(patience)) {
        return false;
    }
    // A busy instance will answer later; one that has closed its socket never will.
    return socket.waitForReadyRead(patience) || socket.state() == QLocalSocket::ConnectedState;
}

bool SingleInstance::isOwnerHere() const {
    qint64 process = 0;
    QString host;
    QString program;
    return m_lock.getLockInfo(&process, &host, &program) && host == QSysInfo::machineHostName();
}

} // namespace ostrelle
