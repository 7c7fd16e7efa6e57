// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SingleInstance.h"

#include <QCryptographicHash>
#include <QDir>
#include <QLocalSocket>
#include <QSysInfo>
#include <memory>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 longestMessage = qint64{1024} * 1024; // the paths of thousands of files

/// A socket's path must be short; the folder's may not be.
QString socketName(const QString& folder) {
    const QByteArray digest = QCryptographicHash::hash(folder.toUtf8(), QCryptographicHash::Sha256).toHex();
    return u"ostrelle-captions-"_s + QString::fromLatin1(digest.first(16));
}

} // namespace

SingleInstance::SingleInstance(const QString& folder, const StartRequest& request)
    : m_socket(socketName(folder)), m_request(request), m_lock(folder + u"/ostrelle-captions.lock"_s) {
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
    const auto received = std::make_shared<QByteArray>();
    connect(socket, &QLocalSocket::readyRead, socket, [socket, received] {
        received->append(socket->read(longestMessage + 1 - received->size()));
        if (received->size() > longestMessage) {
            received->clear();
            socket->abort();
        }
    });
    connect(socket, &QLocalSocket::disconnected, this, [this, received] {
        Q_EMIT startedAgain(
            StartRequest::fromBytes(*received).value_or(StartRequest())); // at least the window
    });
    connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
    socket->write("here");
    socket->flush();
}

bool SingleInstance::knock() const {
    constexpr int patience = 2000; // milliseconds
    QLocalSocket socket;
    socket.connectToServer(m_socket);
    if (!socket.waitForConnected(patience)) {
        return false;
    }
    // A busy instance will answer later; one that has closed its socket never will.
    const bool isThere = socket.waitForReadyRead(patience) || socket.state() == QLocalSocket::ConnectedState;
    if (isThere) {
        socket.write(m_request.toBytes());
        while (socket.bytesToWrite() > 0 && socket.waitForBytesWritten(patience)) {
        }
    }
    return isThere;
}

bool SingleInstance::isOwnerHere() const {
    qint64 process = 0;
    QString host;
    QString program;
    return m_lock.getLockInfo(&process, &host, &program) && host == QSysInfo::machineHostName();
}

} // namespace ostrelle
