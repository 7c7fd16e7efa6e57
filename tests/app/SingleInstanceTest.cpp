// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SingleInstance.h"

#include "app/Arguments.h"
#include "app/EndingInstance.h"
#include "core/Error.h"
#include "support/Await.h"
#include "support/FileFacts.h"
#include "support/VirtualClock.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCborMap>
#include <QCborValue>
#include <QDir>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTimer>
#include <QtConcurrentRun>
#include <memory>
#include <optional>
#include <vector>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

using Standing = SingleInstance::Standing;

/// Claims on another thread: claim() blocks until the first instance answers from this event loop.
Standing claimElsewhere(const QString& folder, const StartRequest& request = {}) {
    QFuture<Standing> claim =
        QtConcurrent::run([folder, request] { return SingleInstance(folder, request).claim(); });
    waitUntil([&claim] { return claim.isFinished(); });
    return claim.result();
}

} // namespace

TEST(SingleInstance, ASecondStartBringsTheFirstToTheFrontAndEnds) {
    const QTemporaryDir folder;
    SingleInstance first(folder.filePath(u"config"_s));
    ASSERT_EQ(first.claim(), Standing::first);
    int knocks = 0;
    QObject::connect(&first, &SingleInstance::startedAgain, &first, [&knocks] { ++knocks; });
    EXPECT_EQ(claimElsewhere(folder.filePath(u"config"_s)), Standing::second);
    waitUntil([&knocks] { return knocks == 1; });
    SingleInstance elsewhere(folder.filePath(u"another home"_s));
    EXPECT_EQ(elsewhere.claim(), Standing::first);
}

TEST(SingleInstance, ASecondStartHandsWhatIsWantedToTheFirst) {
    const QTemporaryDir folder;
    SingleInstance first(folder.path());
    ASSERT_EQ(first.claim(), Standing::first);
    QList<StartRequest> given;
    QObject::connect(&first, &SingleInstance::startedAgain, &first,
                     [&](const StartRequest& request) { given.append(request); });
    const StartRequest request{.wish = StartRequest::Wish::captionImages,
                               .files = {u"/photos/a b.jpg"_s, u"/photos/line\nbreak ü.jpg"_s},
                               .activationToken = "token"};
    EXPECT_EQ(claimElsewhere(folder.path(), request), Standing::second);
    waitUntil([&] { return given.size() == 1; });
    EXPECT_EQ(given.last(), request);
    EXPECT_EQ(claimElsewhere(folder.path(), {.files = {QString(2'000'000, u'x')}}), Standing::second);
    waitUntil([&] { return given.size() == 2; });
    EXPECT_EQ(given.last(), StartRequest()) << "too long a request only shows the window";
}

TEST(StartRequest, BytesThatAreNoneAreRefused) {
    const QByteArray bytes = StartRequest{.files = {u"/a.jpg"_s}}.toBytes();
    EXPECT_TRUE(StartRequest::fromBytes(bytes));
    for (const QByteArray& wrong :
         {QByteArray(), bytes.chopped(1), QByteArray("{}"), QCborMap{{u"wish"_s, 4}}.toCborValue().toCbor(),
          QCborMap{{u"wish"_s, u"show"_s}}.toCborValue().toCbor()}) {
        EXPECT_FALSE(StartRequest::fromBytes(wrong)) << wrong.toHex().toStdString();
    }
}

TEST(Arguments, NameFilesOrAskForWords) {
    const auto of = [](std::vector<const char*> words) {
        words.insert(words.begin(), "ostrelle-captions");
        const int count = static_cast<int>(words.size());
        if (const std::optional<int> status = answerArguments(count, words.data())) {
            return u"status %1"_s.arg(*status);
        }
        try {
            const StartRequest request = startRequest(count, words.data());
            const QString wish =
                request.wish == StartRequest::Wish::switchAutoMode ? u"switch "_s : QString();
            return wish + request.files.join(u' ');
        } catch (const Error& error) {
            return error.localizedDescription();
        }
    };
    const QString here = QDir::currentPath() + u'/';
    EXPECT_EQ(of({}), QString());
    EXPECT_EQ(of({"a.jpg", "--version"}), u"status 0");
    EXPECT_EQ(of({"/photos/a.jpg", "b.jpg"}), u"/photos/a.jpg "_s + here + u"b.jpg"_s);
    EXPECT_EQ(of({"--", "--help"}), here + u"--help"_s);
    EXPECT_EQ(of({"--switch-auto-mode", "/a.jpg"}), u"switch /a.jpg"_s);
    EXPECT_EQ(of({"--nonsense"}), u"There is no option --nonsense.");
    EXPECT_TRUE(of({"\xFF.jpg"}).contains(u"is not UTF-8"));
}

TEST(SingleInstance, AStartWaitsForAnEarlierOneThatIsAboutToEndButNotForEver) {
    for (const bool endsInTime : {true, false}) {
        const QTemporaryDir folder;
        VirtualClock clock;
        auto first = std::make_unique<SingleInstance>(folder.path());
        ASSERT_EQ(first->claim(), Standing::first);
        first->close();
        SingleInstance second(folder.path());
        QTimer whenTold;
        QObject::connect(&whenTold, &QTimer::timeout, &whenTold, [&] {
            auto* news = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (news == nullptr) {
                return;
            }
            if (endsInTime) {
                first.reset();
                clock.advance(std::chrono::seconds(1));
            } else {
                clock.advance(EndingInstance::patience);
                EXPECT_EQ(news->text(), u"Ostrelle Captions has not ended yet");
                news->reject();
            }
        });
        whenTold.start(std::chrono::milliseconds(1));
        EXPECT_EQ(EndingInstance(second, clock).wait(), endsInTime ? Standing::first : Standing::early);
    }
}

TEST(SingleInstance, WhatAKilledProgramLeftIsNoInstance) {
    const QTemporaryDir folder;
    writeFile(folder.filePath(u"ostrelle-captions.lock"_s), "4194305\nostrelle-captions\nanother-host\n");
    SingleInstance instance(folder.path());
    EXPECT_EQ(instance.claim(), Standing::first);
}

TEST(SingleInstance, WhereNoLockCanBeMadeTheProgramStartsAllTheSame) {
    SingleInstance instance(u"/proc/none"_s);
    EXPECT_EQ(instance.claim(), Standing::first);
}

} // namespace ostrelle
