// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/FtpServer.h"

#include "platform/SystemClock.h"
#include "standins/MemoryDefaults.h"
#include "support/Await.h"
#include "support/RecordingLog.h"
#include "transfer/ftp/CertificateCheck.h"
#include "transfer/ftp/CurlFtpStreams.h"
#include "transfer/ftp/FTPClient.h"
#include "transfer/ftp/TransferBuffer.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTcpServer>
#include <QTemporaryDir>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// Real servers, and the client as the program has it.
class FtpServerTest : public testing::Test {
protected:
    FTPClient client(int port, const QString& password = u"secret"_s, const QString& path = u"/"_s,
                     const QString& host = u"127.0.0.1"_s) {
        return FTPClient({.host = host,
                          .username = u"camera"_s,
                          .passwordProvider = [password] { return password; },
                          .path = path,
                          .port = port,
                          .security = security,
                          .isEncryptionOpen = isEncryptionOpen},
                         {.makeStream = [this](const FtpAddress& address) { return streams.make(address); },
                          .clock = clock,
                          .log = log,
                          .access = access,
                          .threads = threads,
                          .status = status});
    }
    void put(const QString& name, const QByteArray& bytes) {
        QFile file(remote.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    Download fetch(int port, const QString& name, std::optional<qint64> expectedSize = {}) {
        FTPClient ftp = client(port);
        return await(ftp.downloadFile(name, {.path = target, .expectedSize = expectedSize}, {}));
    }
    QByteArray fetched() const {
        QFile file(target);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    QString reasonOf(FTPClient ftp) {
        const ConnectionResult result = await(ftp.testConnection());
        EXPECT_EQ(result.isGood, result.reason.isEmpty());
        return result.reason.section(u" It says: "_s, 0, 0);
    }

    QTemporaryDir remote;
    QTemporaryDir local;
    QString target = local.filePath(u"IMG_1.JPG"_s);
    FtpSecurity security;
    bool isEncryptionOpen = false;
    CurlFtpStreams streams;
    SystemClock clock;
    RecordingLog log;
    MemoryDefaults defaults;
    StatusStore status{defaults, clock};
    UnsandboxedAccess access;
    FolderThreads threads;
};

QByteArray pattern(qsizetype size) {
    QByteArray bytes(size, Qt::Uninitialized);
    for (qsizetype i = 0; i < size; ++i) {
        bytes[i] = static_cast<char>((i * 7) ^ (i >> 8));
    }
    return bytes;
}

} // namespace

TEST_F(FtpServerTest, FetchesFilesWhateverTheyAreCalled) {
    const QStringList names = {u"IMG 1.JPG"_s,     u"a;type=a"_s,       u"100%41#?.jpg"_s,
                               u"\u00FCber.jpg"_s, u"u\u0308ber.jpg"_s, u"\U0001F3C8.jpg"_s,
                               u"[a]{b}*.jpg"_s,   u"'\"&.jpg"_s};
    for (const QString& name : names) {
        put(name, name.toUtf8() + "\r\n\n\xFF");
    }
    const FtpServer server(remote.path());
    FTPClient ftp = client(server.port);
    const QList<FTPFileInfo> listing = await(ftp.listFiles());
    EXPECT_EQ(listing.size(), names.size());
    for (const FTPFileInfo& entry : listing) {
        EXPECT_TRUE(names.contains(entry.name)) << entry.name.toStdString();
        EXPECT_EQ(fetch(server.port, entry.name).failure, QString());
        EXPECT_EQ(fetched(), entry.name.toUtf8() + "\r\n\n\xFF") << "byte for byte";
    }
}

TEST_F(FtpServerTest, CopesWithServersOfAllKinds) {
    const QByteArray bytes = pattern(3'000'000);
    put(u"IMG_1.JPG"_s, bytes);
    for (const QStringList& options : {QStringList(),
                                       {u"--no-epsv"_s},
                                       {u"--no-epsv"_s, u"--pasv-address"_s, u"10.255.255.1"_s},
                                       {u"--late-end"_s, u"0.3"_s},
                                       {u"--silent-quit"_s},
                                       {u"--reply"_s, u"SIZE"_s, u"502 No."_s}}) {
        const FtpServer server(remote.path(), options);
        EXPECT_EQ(fetch(server.port, u"IMG_1.JPG"_s, bytes.size()).failure, QString())
            << options.join(u' ').toStdString();
        EXPECT_EQ(fetched(), bytes) << options.join(u' ').toStdString();
    }
}

TEST_F(FtpServerTest, AFileThatBreaksOffIsNotWhole) {
    const QByteArray bytes = pattern(1'000'000);
    put(u"IMG_1.JPG"_s, bytes);
    for (const QString& limit : {u"1"_s, u"100000"_s, u"999999"_s}) {
        const FtpServer server(remote.path(), {u"--reset-after"_s, limit});
        const Download done = fetch(server.port, u"IMG_1.JPG"_s, bytes.size());
        EXPECT_EQ(done.failure, u"The connection was lost."_s);
        EXPECT_LE(done.bytes, limit.toLongLong());
    }
}

TEST_F(FtpServerTest, SaysInOneLineWhyItCannotList) {
    FtpServer server(remote.path());
    EXPECT_EQ(reasonOf(client(server.port)), QString());
    EXPECT_EQ(reasonOf(client(server.port, u"wrong"_s)),
              u"The server refuses the user name or the password."_s);
    EXPECT_EQ(reasonOf(client(server.port, u"secret"_s, u"/nowhere"_s)),
              u"The server has no such folder, or does not let this user see it."_s);
    EXPECT_EQ(reasonOf(client(server.port, u"secret"_s, u"/"_s, u"no-such-host.invalid"_s)),
              u"There is no server of this name, or the network is down."_s);
    server.stop();
    EXPECT_EQ(reasonOf(client(server.port)), u"The server refuses the connection."_s);
    FtpServer full(remote.path(), {u"--reply"_s, u"USER"_s, u"421 Too many."_s});
    EXPECT_EQ(reasonOf(client(full.port)), u"The server closed the connection."_s);
    EXPECT_EQ(log.count(u"secret"_s) + log.count(u"wrong"_s), 0);
}

TEST_F(FtpServerTest, EncryptsAndTrustsJustTheCertificateThatTheUserDoes) {
    const QByteArray bytes = pattern(3'000'000);
    put(u"IMG_1.JPG"_s, bytes);
    const FtpServer server(remote.path(), {u"--tls"_s, u"required"_s});
    const auto test = [&](FtpEncryption encryption, const QString& trusted) {
        security = {.encryption = encryption, .trustedCertificate = trusted};
        return await(client(server.port).testConnection());
    };
    const ConnectionResult plain = test(FtpEncryption::none, {});
    EXPECT_EQ(plain.reason,
              u"The server refuses the user name or the password. It says: 550 SSL/TLS required "
              "on the control channel."_s);
    EXPECT_FALSE(plain.isEncrypted);
    const ConnectionResult selfSigned = test(FtpEncryption::explicitTls, {});
    EXPECT_EQ(selfSigned.reason, u"The server's certificate cannot be trusted (self-signed certificate). Its "
                                 "SHA-256 fingerprint is %1."_s.arg(server.fingerprint));
    EXPECT_EQ(selfSigned.untrustedCertificate, server.fingerprint);
    const QString another = QString(server.fingerprint).replace(0, 2, u"XX"_s);
    const ConnectionResult changed = test(FtpEncryption::explicitTls, another);
    EXPECT_TRUE(changed.reason.startsWith(u"The server's certificate has changed"))
        << changed.reason.toStdString();
    EXPECT_EQ(changed.untrustedCertificate, server.fingerprint);
    EXPECT_TRUE(test(FtpEncryption::explicitTls, server.fingerprint).isGood);
    EXPECT_EQ(fetch(server.port, u"IMG_1.JPG"_s, bytes.size()).failure, QString());
    EXPECT_EQ(fetched(), bytes);
    EXPECT_FALSE(test(FtpEncryption::explicitTls, another).isGood) << "also while connections are kept";
}

TEST_F(FtpServerTest, AKeptConnectionThatTheServerHasEndedIsMadeAnew) {
    put(u"IMG_1.JPG"_s, "jpeg");
    std::optional<FtpServer> server(std::in_place, remote.path());
    const int port = server->port;
    EXPECT_EQ(reasonOf(client(port)), QString());
    server->stop();
    server.emplace(remote.path(), QStringList{u"--port"_s, QString::number(port)});
    EXPECT_EQ(reasonOf(client(port)), QString());
}

TEST_F(FtpServerTest, WorksWithAServerOfAnotherMake) {
    const QByteArray bytes = pattern(3'000'000);
    put(u"\u00FC #1;type=a.JPG"_s, bytes);
    for (const QStringList& options : {QStringList(), QStringList{u"--tls"_s}}) {
        const FtpServer server(remote.path(), options, QStringLiteral(PROFTPD_SERVER));
        security = {.encryption = options.isEmpty() ? FtpEncryption::none : FtpEncryption::explicitTls,
                    .trustedCertificate = server.fingerprint};
        for (const QString& path :
             {u"/"_s, remote.path(), u"/"_s + remote.path()}) { // from the login or the top
            FTPClient ftp = client(server.port, u"secret"_s, path);
            const QList<FTPFileInfo> listing = await(ftp.listFiles());
            ASSERT_EQ(listing.size(), 1) << path.toStdString();
            const Download done = await(ftp.downloadFile(listing.first().name, {.path = target}, {}));
            EXPECT_EQ(done.failure, QString()) << path.toStdString();
            EXPECT_EQ(fetched(), bytes);
        }
        EXPECT_EQ(reasonOf(client(server.port, u"secret"_s, u"/nowhere"_s)),
                  u"The server has no such folder, or does not let this user see it."_s);
    }
}

TEST_F(FtpServerTest, TriesEncryptionBeforeThePasswordIsSentWhileNobodyHasChosen) {
    isEncryptionOpen = true;
    const auto test = [&](int port, const QString& password) {
        return await(client(port, password).testConnection());
    };
    const FtpServer plain(remote.path());
    const ConnectionResult unencrypted = test(plain.port, u"secret"_s);
    EXPECT_TRUE(unencrypted.isGood && !unencrypted.isEncrypted) << "it has no TLS";
    const FtpServer both(remote.path(), {u"--tls"_s, u"offered"_s});
    EXPECT_EQ(test(both.port, u"secret"_s).untrustedCertificate, both.fingerprint);
    security.trustedCertificate = both.fingerprint;
    const ConnectionResult good = test(both.port, u"secret"_s);
    EXPECT_TRUE(good.isGood && good.isEncrypted);
    const ConnectionResult wrong = test(both.port, u"wrong"_s);
    EXPECT_TRUE(!wrong.isGood && wrong.reason.startsWith(u"The server refuses the user name"_s));
    security.encryption = FtpEncryption::explicitTls;
    EXPECT_EQ(reasonOf(client(plain.port)), u"The server offers no encryption."_s);
}

TEST(CertificateCheck, ReadsFingerprintsHoweverTheyAreWritten) {
    const QString bytes = QString(u"A1"_s).repeated(32);
    const QString colons = u"A1:"_s.repeated(31) + u"A1"_s;
    for (const QString& text : {bytes, bytes.toLower(), colons, u"a1 "_s.repeated(32)}) {
        EXPECT_EQ(normalizedFingerprint(text), colons);
    }
    for (const QString& text :
         {QString(), bytes.chopped(2), bytes + u"A1"_s, QString(bytes).replace(4, 1, u"x"_s)}) {
        EXPECT_EQ(normalizedFingerprint(text), QString());
    }
}

TEST(TransferBuffer, TellsTheEndOnlyAfterItWasOpenAndAllIsRead) {
    using Status = FtpStream::Status;
    TransferBuffer empty;
    EXPECT_EQ(empty.status(), Status::opening);
    empty.finish({});
    EXPECT_EQ(empty.status(), Status::open) << "otherwise its reader waits for that";
    EXPECT_EQ(empty.status(), Status::atEnd);

    TransferBuffer broken;
    EXPECT_FALSE(broken.news().hasHappened());
    broken.write("ab");
    broken.finish(u"The connection was lost."_s);
    EXPECT_TRUE(broken.news().hasHappened());
    EXPECT_EQ(broken.status(), Status::open);
    EXPECT_EQ(broken.status(), Status::reading);
    char bytes[3] = {};
    EXPECT_EQ(broken.read(bytes, 3), 2);
    EXPECT_EQ(broken.status(), Status::error);

    TransferBuffer refused;
    refused.finish(u"The server refuses the connection."_s);
    EXPECT_EQ(refused.status(), Status::error);
}

} // namespace ostrelle
