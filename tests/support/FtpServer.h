// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <QProcess>
#include <QString>
#include <QStringList>

namespace ostrelle {

/// A real FTP server of its own process over a folder, for one test.
class FtpServer {
public:
    explicit FtpServer(const QString& folder, const QStringList& options = {},
                       const QString& program = QStringLiteral(FTP_SERVER)) {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(program, QStringList{folder} + options);
        constexpr int patience = 30'000; // milliseconds
        while (!m_process.canReadLine() && m_process.waitForReadyRead(patience)) {
        }
        const QByteArrayList line = m_process.readLine().trimmed().split(' ');
        port = line.first().toInt();
        fingerprint = QString::fromLatin1(line.value(1));
        EXPECT_GT(port, 0) << "the server does not start";
    }
    ~FtpServer() { stop(); }
    FtpServer(const FtpServer&) = delete;
    FtpServer& operator=(const FtpServer&) = delete;

    void stop() {
        m_process.closeWriteChannel();
        if (m_process.waitForFinished(5000)) {
            return;
        }
        m_process.kill();
        m_process.waitForFinished();
    }

    int port = 0;
    QString fingerprint; ///< of its certificate, with --tls

private:
    QProcess m_process;
};

} // namespace ostrelle
