// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/ftp/StabilityWait.h"

#include "support/Await.h"
#include "support/RecordingLog.h"
#include "support/VirtualClock.h"
#include "transfer/ftp/FTPError.h"

#include <gtest/gtest.h>

namespace ostrelle {

using namespace Qt::StringLiterals;
using std::chrono::seconds;

namespace {

constexpr qint64 absent = -1;
constexpr qint64 failing = -2;

/// A folder in which files have certain sizes, listing by listing; the last ones stay.
class GrowingFolder : public FileTransferClient {
public:
    QCoro::Task<QList<FTPFileInfo>> listFiles() override {
        QList<FTPFileInfo> entries;
        for (auto file = sizes.constBegin(); file != sizes.constEnd(); ++file) {
            const qint64 size = file->value(std::min<qsizetype>(listings, file->size() - 1));
            if (size == failing) {
                throw FTPError(FTPError::Case::readError);
            }
            if (size != absent) {
                entries.append({.name = file.key(), .size = size, .isDirectory = false});
            }
        }
        ++listings;
        co_return entries;
    }
    QCoro::Task<Download> downloadFile(QString, DownloadTarget, DownloadProgress) override { co_return {}; }
    QCoro::Task<ConnectionResult> testConnection() override { co_return {}; }
    QCoro::Task<qint64> fileSize(QString) override { co_return 0; }
    QCoro::Task<Stability> waitForFileStable(QString, std::chrono::milliseconds,
                                             std::chrono::milliseconds) override {
        co_return {};
    }
    QCoro::Task<bool> waitForBatchStable(QStringList, std::chrono::milliseconds,
                                         std::chrono::milliseconds) override {
        co_return true;
    }

    QMap<QString, QList<qint64>> sizes;
    qsizetype listings = 0;
};

class StabilityWaitTest : public testing::Test {
protected:
    template <typename T>
    T drive(QCoro::Task<T> task) {
        waitUntil([this, &task] {
            if (!task.isReady() && clock.waiting() > 0) {
                clock.advance(clock.untilNext());
            }
            return task.isReady();
        });
        return task.operator co_await().await_resume();
    }

    VirtualClock clock;
    RecordingLog log;
    GrowingFolder folder;
    StabilityWait wait{folder, clock, log, u"FTPClient"_s};
};

QList<qint64> growing() {
    QList<qint64> sizes;
    for (qint64 size = 1; size < 100; ++size) {
        sizes.append(size);
    }
    return sizes;
}

} // namespace

TEST_F(StabilityWaitTest, OfOneFile) {
    const struct {
        const char* what;
        QList<qint64> sizes;
        bool isStable;
        bool hasChanged;
        qint64 listings;
    } rows[] = {
        {"two sightings", {7}, true, false, 2},
        {"three after a change", {5, 7}, true, true, 4},
        {"it arrives late", {absent, 7}, true, false, 3},
        {"it is empty", {0}, false, false, 15},
        {"it is empty at first", {0, 7}, true, true, 4},
        {"it never comes", {absent}, false, false, 15},
        {"it grows on and on", growing(), true, true, 15},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        folder.listings = 0;
        folder.sizes = {{u"a.jpg"_s, row.sizes}};
        const Stability stability = drive(wait.waitForFile(u"a.jpg"_s, seconds(2), seconds(30)));
        EXPECT_EQ(stability.isStable, row.isStable);
        EXPECT_EQ(stability.hasChanged, row.hasChanged);
        EXPECT_EQ(folder.listings, row.listings);
    }
}

TEST_F(StabilityWaitTest, OfABatch) {
    const struct {
        const char* what;
        QList<qint64> first;
        QList<qint64> second;
        bool isStable;
        qint64 listings;
    } rows[] = {
        {"three sweeps", {7}, {8}, true, 3},
        {"the second changes", {7}, {5, 5, 8}, true, 5},
        {"one goes and comes back", {7}, {5, 5, absent, 5}, true, 4},
        {"one grows on and on", {7}, growing(), true, 30},
        {"one is empty", {7}, {0}, false, 31},
        {"one vanishes for good", {7}, {5, absent}, true, 30},
        {"one comes as the time ends", {7}, QList<qint64>(30, absent) + QList<qint64>{5}, true, 31},
        {"the server fails at the end", {7}, QList<qint64>(30, absent) + QList<qint64>{failing}, false, 30},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        folder.listings = 0;
        folder.sizes = {{u"a.jpg"_s, row.first}, {u"b.jpg"_s, row.second}};
        EXPECT_EQ(drive(wait.waitForBatch({u"a.jpg"_s, u"b.jpg"_s}, seconds(2), seconds(60))), row.isStable);
        EXPECT_EQ(folder.listings, row.listings);
    }
}

TEST_F(StabilityWaitTest, AFailingServerEndsTheWait) {
    folder.sizes = {{u"a.jpg"_s, {failing}}};
    EXPECT_THROW(drive(wait.waitForFile(u"a.jpg"_s, seconds(2), seconds(30))), FTPError);
    EXPECT_THROW(drive(wait.waitForBatch({u"a.jpg"_s}, seconds(2), seconds(60))), FTPError);
    EXPECT_TRUE(drive(wait.waitForBatch({}, seconds(2), seconds(60))));
}

} // namespace ostrelle
