// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/FtpServer.h"

#include <QDir>

#include "CommandLineFixture.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// The program beside a real server.
class ServerCommandTest : public CommandLineTest {
protected:
    ServerCommandTest() { EXPECT_TRUE(QDir(folder.path()).mkdir(u"remote"_s)); }

    Result download(int port, const QStringList& more = {}, const QByteArray& password = "secret\n") const {
        return run(QStringList{u"--server"_s, u"ftp://camera@127.0.0.1:%1/"_s.arg(port), u"--into"_s,
                               u"local"_s, u"--roster"_s, roster(), u"--download-all"_s,
                               u"--password-stdin"_s} +
                       more,
                   password);
    }
};

} // namespace

TEST_F(ServerCommandTest, DownloadsAndCaptionsAllOverTls) {
    storeKey();
    rawImage(u"remote/IMG_1.dng"_s);
    const FtpServer server(folder.filePath(u"remote"_s), {u"--tls"_s, u"required"_s});
    const Result unknown = download(server.port, {u"--tls"_s});
    EXPECT_EQ(unknown.status, 1);
    EXPECT_TRUE(unknown.errors.contains(server.fingerprint)) << unknown.errors.toStdString();
    const QStringList trusting{u"--tls"_s, u"--certificate"_s, server.fingerprint.toLower(), u"--json"_s};
    const Result trusted = download(server.port, trusting);
    EXPECT_EQ(trusted.status, 0) << trusted.errors.toStdString();
    EXPECT_EQ(trusted.output.count(u"\"result\":\"fetched\""_s), 1) << trusted.output.toStdString();
    EXPECT_EQ(trusted.output.count(u"\"result\":\"captioned\""_s), 1) << trusted.output.toStdString();
    EXPECT_EQ(download(server.port, trusting).output, QString()) << "there is nothing left to do";
}

TEST_F(ServerCommandTest, TheExitStatusTellsOfEachFileThatIsNotDone) {
    storeKey();
    rawImage(u"remote/IMG_1.dng"_s);
    write(u"remote/IMG_2.dng"_s, "no picture");
    const FtpServer server(folder.filePath(u"remote"_s));
    EXPECT_EQ(download(server.port).status, 1) << "one has no picture";
    const Result wrong = download(server.port, {}, "wrong\n");
    EXPECT_EQ(wrong.status, 1);
    EXPECT_TRUE(wrong.errors.contains(u"The server refuses the user name or the password."_s));
    EXPECT_FALSE((wrong.errors + wrong.output).contains(u"wrong"_s));
    EXPECT_EQ(download(server.port, {}, "\n").status, 2) << "no password";

    rawImage(u"remote/IMG_3.dng"_s);
    const FtpServer faulty(folder.filePath(u"remote"_s), {u"--reset-after"_s, u"100"_s});
    const Result cut = download(faulty.port);
    EXPECT_EQ(cut.status, 1);
    EXPECT_TRUE(cut.output.contains(u"failed     IMG_3.dng  The connection was lost."_s))
        << cut.output.toStdString();
    EXPECT_EQ(QDir(folder.filePath(u"local"_s)).entryList({u"IMG_3*"_s}, QDir::Files | QDir::Hidden),
              QStringList());
}

} // namespace ostrelle
