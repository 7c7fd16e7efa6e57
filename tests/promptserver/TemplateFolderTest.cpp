// SPDX-License-Identifier: GPL-3.0-or-later
#include "promptserver/TemplateFolder.h"

#include "core/Error.h"
#include "promptserver/ServerOptions.h"
#include "support/RecordingLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace ostrelle {

using namespace Qt::StringLiterals;
using testing::ElementsAre;

class TemplateFolderTest : public testing::Test {
protected:
    void put(const QString& name, const QByteArray& bytes) const {
        QFile::remove(folder.filePath(name)); // a new file, whatever the clock's resolution
        QFile file(folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    const PromptTexts builtIn = {{u"head"_s, u"Built-in head\n\n"_s}, {u"body"_s, u"\nBuilt-in body"_s}};
    QTemporaryDir folder;
    RecordingLog log;
};

TEST_F(TemplateFolderTest, AFileStandsInForItsTextAsItIsNow) {
    put(u"heda.txt"_s, "mistyped");
    put(u"notes.md"_s, "no text at all");
    TemplateFolder templates(folder.path(), builtIn, log);
    EXPECT_EQ(templates.texts(), builtIn);
    EXPECT_THAT(log.lines,
                ElementsAre(u"[PromptServer] heda.txt is not the name of any text and is not used."_s));

    log.lines.clear();
    put(u"head.txt"_s, "First");
    EXPECT_EQ(templates.texts()[u"head"_s], u"First\n\n"_s);
    EXPECT_EQ(templates.texts()[u"body"_s], builtIn[u"body"_s]);
    put(u"head.txt"_s, "Other"); // same size, same second
    EXPECT_EQ(templates.texts()[u"head"_s], u"Other\n\n"_s);
    QFile::remove(folder.filePath(u"head.txt"_s));
    EXPECT_EQ(templates.texts(), builtIn);
    EXPECT_THAT(log.lines,
                ElementsAre(u"[PromptServer] head.txt is in use."_s, u"[PromptServer] head.txt is in use."_s,
                            u"[PromptServer] head.txt is gone; the built-in text is in use."_s));
}

TEST_F(TemplateFolderTest, WhatAnEditorAddsIsTakenOff) {
    struct Row {
        QByteArray file;
        QString text;
    };
    TemplateFolder templates(folder.path(), builtIn, log);
    for (const Row& row : {Row{"One\n", u"\nOne"_s}, Row{"\n\n\nOne\n\nTwo\n\n", u"\nOne\n\nTwo"_s},
                           Row{"\xEF\xBB\xBFOne\r\nTwo\r\n", u"\nOne\nTwo"_s}, Row{" – “é”\n", u"\n – “é”"_s},
                           Row{"\n", u"\n"_s}}) {
        put(u"body.txt"_s, row.file);
        EXPECT_EQ(templates.texts()[u"body"_s], row.text) << row.file.toStdString();
    }
}

TEST_F(TemplateFolderTest, ABrokenFileKeepsTheLastGoodTextAndSaysSoOnce) {
    TemplateFolder templates(folder.path(), builtIn, log);
    put(u"head.txt"_s, "Good");
    templates.texts();
    for (const QByteArray& broken : {QByteArray(""), QByteArray("\xff\xfe"), QByteArray("a\0b", 3),
                                     QByteArray(TemplateFolder::largestFile + 1, 'x')}) {
        log.lines.clear();
        put(u"head.txt"_s, broken);
        EXPECT_EQ(templates.texts()[u"head"_s], u"Good\n\n"_s);
        templates.texts();
        EXPECT_EQ(log.lines.filter(u"head.txt is broken, its last good text stays in use: "_s).size(), 1);
        EXPECT_EQ(log.lines.size(), 1);
    }
    QFile::remove(folder.filePath(u"head.txt"_s));
    QDir(folder.path()).mkdir(u"head.txt"_s);
    EXPECT_EQ(templates.texts()[u"head"_s], u"Good\n\n"_s);
}

TEST_F(TemplateFolderTest, AFolderThatCannotBeSeenKeepsItsTexts) {
    put(u"head.txt"_s, "Good");
    TemplateFolder templates(folder.path(), builtIn, log);
    log.lines.clear();
    const QString away = folder.path() + u".away"_s;
    ASSERT_TRUE(QDir().rename(folder.path(), away)); // like an unmounted share
    EXPECT_EQ(templates.texts()[u"head"_s], u"Good\n\n"_s);
    EXPECT_EQ(templates.texts()[u"head"_s], u"Good\n\n"_s);
    ASSERT_TRUE(QDir().rename(away, folder.path()));
    put(u"head.txt"_s, "Better");
    EXPECT_EQ(templates.texts()[u"head"_s], u"Better\n\n"_s);
    EXPECT_EQ(log.lines.size(), 3);
    EXPECT_THROW(TemplateFolder(folder.filePath(u"none"_s), builtIn, log), Error);
}

TEST(ServerOptions, SayWhereAndWhatToServe) {
    const ServerOptions none = parseServerOptions({});
    EXPECT_EQ(none.address, u"127.0.0.1"_s);
    EXPECT_TRUE(none.templateFolder.isEmpty() && none.keyFile.isEmpty());
    const ServerOptions all = parseServerOptions(
        {u"--listen"_s, u"::1"_s, u"--port=0"_s, u"--templates"_s, u"/t"_s, u"--key-file"_s, u"/k"_s});
    EXPECT_EQ(all.address, u"::1"_s);
    EXPECT_EQ(all.port, 0);
    EXPECT_EQ(all.templateFolder, u"/t"_s);
    EXPECT_EQ(all.keyFile, u"/k"_s);
    EXPECT_EQ(parseServerOptions({u"-h"_s}).command, ServerOptions::Command::help);
    for (const QStringList& wrong : {QStringList{u"--port"_s, u"65536"_s},
                                     {u"--port"_s, u"-1"_s},
                                     {u"--port"_s, u"http"_s},
                                     {u"--prot"_s, u"1"_s},
                                     {u"--port"_s},
                                     {u"extra"_s}}) {
        EXPECT_THROW(parseServerOptions(wrong), Error) << qPrintable(wrong.join(u' '));
    }
}

TEST_F(TemplateFolderTest, AKeyFileHoldsItsKeyInTheFirstLine) {
    put(u"key"_s, " pk-1 2 \r\nignored\n");
    EXPECT_EQ(readKeyFile(folder.filePath(u"key"_s)), u"pk-1 2"_s);
    for (const QByteArray& wrong :
         {QByteArray(""), QByteArray("\npk"), QByteArray("p\x01k"), QByteArray(5000, 'k')}) {
        put(u"key"_s, wrong);
        EXPECT_THROW(readKeyFile(folder.filePath(u"key"_s)), Error) << wrong.left(10).toStdString();
    }
    EXPECT_THROW(readKeyFile(folder.filePath(u"no key"_s)), Error);
}

} // namespace ostrelle
