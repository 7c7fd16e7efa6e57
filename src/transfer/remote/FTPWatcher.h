// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Overtaking.h"
#include "core/TaskGroup.h"
#include "platform/Clock.h"
#include "platform/FileAccess.h"
#include "platform/FolderThreads.h"
#include "platform/ImageClaims.h"
#include "platform/PlainLog.h"
#include "state/ProcessedFilesManifest.h"
#include "state/StatusStore.h"
#include "transfer/ftp/FileTransferClient.h"
#include "transfer/remote/FetchRun.h"

#include <QCoroTask>
#include <QString>
#include <QStringList>
#include <chrono>
#include <exception>
#include <functional>
#include <memory>
#include <optional>

namespace ostrelle {

/// What a watcher works with. All of it must outlive the watcher's tasks.
struct FTPWatcherParts {
    StatusStore& status;
    ProcessedFilesManifest& manifest;
    FetchLedger& ledger;
    FetchedImages& fetched;
    ImageClaims& claims;
    Clock& clock;
    PlainLog& log;
    FileAccess& access;
    FolderThreads& threads;
    FetchListener listener = {};
};

/// Takes the paths of the images that are to be captioned.
using NewFiles = std::function<void(const QStringList& images)>;

/// Polls the folder of a server and fetches what is new, once it has stopped growing. The local copy of an
/// image that has been captioned is never replaced. For the thread of the event loop only; await finished()
/// before destroying it.
class FTPWatcher {
public:
    /// Fetches into the folder.
    FTPWatcher(std::unique_ptr<FileTransferClient> client, QString folder, FTPWatcherParts parts);
    FTPWatcher(const FTPWatcher&) = delete;
    FTPWatcher& operator=(const FTPWatcher&) = delete;

    /// Polls at once and then at each interval. Calls `onNewFiles` at the end of each poll that has not
    /// failed, also without images. Does nothing if it is polling.
    void start(std::chrono::milliseconds interval, NewFiles onNewFiles);
    /// A poll under way finishes its file and begins no further one. A full download goes on.
    void stop();
    /// Ends all of it, and leaves no part of a file behind.
    void abandon();

    /// Fetches all files whose local copy is missing or has another size, captioned or not, and calls
    /// `onComplete` with the images, if there are any. Waits for a poll under way. Does not throw.
    QCoro::Task<> downloadAllFiles(NewFiles onComplete);

    /// Resumes when no poll is under way.
    QCoro::Task<> finished() const { return m_polls.finished(); }

private:
    void beginPoll();
    QCoro::Task<> poll(NewFiles onNewFiles, Overtaking::Mark mark);
    QCoro::Task<> pollOnce(NewFiles onNewFiles, Overtaking::Mark mark);
    QCoro::Task<> downloadOnce(NewFiles onComplete, Overtaking::Mark mark);
    /// Lists the folder and logs what is in it; `imageLine` takes the number of images.
    QCoro::Task<ServerFiles> look(QString imageLine);
    /// Decides what to fetch.
    QCoro::Task<FetchPlan> plan(ServerFiles files, FetchCare care);
    /// The images that were fetched earlier, by this program or one that was killed, and never handed on.
    QCoro::Task<QStringList> leftBehind();
    /// Shows what was not fetched, beneath the words on what was.
    void remark(const FetchPlan& plan, const FetchRun& run);
    /// False if the files go on growing. Takes their sizes from a listing after the wait.
    QCoro::Task<bool> waitForBatch(FetchPlan* plan);
    void handOn(const QStringList& images, const NewFiles& onNewFiles);
    void begin(const QString& message);
    void fail(const QString& heading, const std::exception_ptr& failure, const Overtaking::Mark& mark);
    void end(const Overtaking::Mark& mark);
    FetchParts fetchParts();
    void print(const QString& words);

    std::unique_ptr<FileTransferClient> m_client;
    FTPWatcherParts m_parts;
    DestinationFolder m_destination;
    Overtaking m_stops; ///< of the polls
    Overtaking m_ends;  ///< of everything
    NewFiles m_onNewFiles;
    std::unique_ptr<Timer> m_pollTimer;
    TaskGroup m_polls;
};

} // namespace ostrelle
