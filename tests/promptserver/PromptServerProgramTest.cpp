// SPDX-License-Identifier: GPL-3.0-or-later
#include "promptserver/Asking.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// For one step; far longer than it takes.
constexpr int longestWait = 30'000;

/// Runs the program as the operator of a team's own server does.
class PromptServerProgramTest : public testing::Test {
protected:
    void write(const QString& name, const QByteArray& bytes) const {
        QFile file(folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }
    void start(const QStringList& arguments) {
        server.setProcessChannelMode(QProcess::MergedChannels);
        server.start(QStringLiteral(PROMPT_SERVER_PROGRAM), arguments);
    }
    /// Reads until a whole line contains the words; returns it, or an empty one if none comes.
    QString lineWith(const QString& words) {
        for (;;) {
            while (server.canReadLine()) {
                const QString line = QString::fromUtf8(server.readLine()).trimmed();
                if (line.contains(words)) {
                    return line;
                }
            }
            if (!server.waitForReadyRead(longestWait)) {
                return {};
            }
        }
    }
    void startServing(const QStringList& arguments) {
        start(QStringList{u"--port"_s, u"0"_s} + arguments);
        url = QUrl(lineWith(u"[PromptServer] Serving http"_s).section(u' ', -1));
        ASSERT_TRUE(url.isValid() && url.port() > 0) << "the program logs where it serves";
    }
    QTemporaryDir folder;
    QProcess server;
    QUrl url;
};

} // namespace

TEST_F(PromptServerProgramTest, ServesATeamsOwnTextsToThoseWithTheKeyUntilItIsTold) {
    constexpr auto ownText = "Call the home side the Herons.";
    ASSERT_TRUE(QDir(folder.path()).mkdir(u"templates"_s));
    write(u"templates/sportFootball.txt"_s, ownText);
    write(u"key"_s, "pk-team-key\n");
    startServing(
        {u"--templates"_s, folder.filePath(u"templates"_s), u"--key-file"_s, folder.filePath(u"key"_s)});

    EXPECT_EQ(url.path(), u"/api/prompt"_s);
    const Answer served = ask(url, get(target(), keyHeader("pk-team-key")));
    EXPECT_EQ(served.status, 200);
    EXPECT_EQ(served.json().value(u"templates"_s).toObject().size(), 6);
    EXPECT_TRUE(served.body.contains(ownText));
    EXPECT_EQ(ask(url, get(target(), keyHeader("pk-team-ke"))).status, 401);

    ASSERT_EQ(::kill(static_cast<pid_t>(server.processId()), SIGTERM), 0);
    EXPECT_EQ(lineWith(u"Stopped"_s), u"[PromptServer] Stopped."_s);
    ASSERT_TRUE(server.waitForFinished(longestWait));
    EXPECT_EQ(server.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(server.exitCode(), 0);
    QTcpSocket late;
    late.connectToHost(url.host(), static_cast<quint16>(url.port()));
    EXPECT_FALSE(late.waitForConnected(longestWait)) << "the port is closed";
}

TEST_F(PromptServerProgramTest, EndsWithASentenceWhenItCannotServe) {
    const QString missing = folder.filePath(u"none"_s);
    write(u"empty"_s, "\n");
    const struct {
        QStringList arguments;
        int status;
        QString words;
    } rows[] = {
        {{u"--port"_s, u"seventy"_s}, 2, u"There is no port \"seventy\""_s},
        {{u"--templates"_s, missing}, 1, missing},
        {{u"--key-file"_s, missing}, 1, u"Could not read "_s + missing},
        {{u"--key-file"_s, folder.filePath(u"empty"_s)}, 1, u"has no key in its first line"_s},
        {{u"--listen"_s, u"no address"_s}, 1, u"cannot listen on no address"_s},
    };
    for (const auto& row : rows) {
        start(row.arguments);
        EXPECT_TRUE(lineWith(row.words).startsWith(u"ostrelle-prompt-server: "_s)) << row.words.toStdString();
        ASSERT_TRUE(server.waitForFinished(longestWait));
        EXPECT_EQ(server.exitCode(), row.status);
    }
}

} // namespace ostrelle
