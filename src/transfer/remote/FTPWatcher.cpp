// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/remote/FTPWatcher.h"

#include "core/Attempt.h"
#include "core/OffMainThread.h"
#include "core/Text.h"
#include "platform/PrintInTurns.h"
#include "transfer/ftp/FTPError.h"

#include <QStringBuilder>
#include <algorithm>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;
using std::chrono::seconds;

namespace {

/// Has the right to transfer, and gives it back.
class TransferTurn {
public:
    TransferTurn(FetchLedger& ledger, std::unique_ptr<Gate::Pass> pass)
        : m_ledger(ledger), m_pass(std::move(pass)) {}
    ~TransferTurn() { m_ledger.leave(); }
    TransferTurn(const TransferTurn&) = delete;
    TransferTurn& operator=(const TransferTurn&) = delete;

private:
    FetchLedger& m_ledger;
    std::unique_ptr<Gate::Pass> m_pass;
};

QStringList namesOf(const QList<FTPFileInfo>& files) {
    QStringList names;
    for (const FTPFileInfo& file : files) {
        names.append(file.name);
    }
    return names;
}

void takeSizes(const QHash<QString, qint64>& sizes, QList<FTPFileInfo>* files) {
    files->removeIf([&sizes](const FTPFileInfo& file) { return !sizes.contains(file.name); });
    for (FTPFileInfo& file : *files) {
        file.size = sizes.value(file.name);
    }
}

/// What the log tells of a listing.
QStringList linesOf(const QList<FTPFileInfo>& listing, const ServerFiles& files, const QString& imageLine) {
    QStringList lines{u"Total files found on server: %1"_s.arg(listing.size())};
    for (const FTPFileInfo& entry : listing) {
        lines.append(u"  - " % entry.name % u" (size: " % QString::number(entry.size) % u", isDir: " %
                     (entry.isDirectory ? u"true)"_s : u"false)"_s));
    }
    if (!files.skipped.isEmpty()) {
        lines.append(u"Skipped non-image files:\n"_s + files.skipped.join(u'\n'));
    }
    for (const RefusedFile& file : files.refused) {
        lines.append(u"[FTPWatcher] Not fetched: %1: %2"_s.arg(file.name, file.reason));
    }
    lines.append(imageLine.arg(files.images.size()));
    for (const FTPFileInfo& image : files.images) {
        lines.append(u"  Image: "_s + image.name);
    }
    return lines;
}

} // namespace

FTPWatcher::FTPWatcher(std::unique_ptr<FileTransferClient> client, QString folder, FTPWatcherParts parts)
    : m_client(std::move(client))
    , m_parts(parts)
    , m_destination(std::move(folder), parts.threads, parts.access, parts.claims)
    , m_polls([this](const QString& words) { print(u"A poll failed: "_s + words); }) {}

void FTPWatcher::start(std::chrono::milliseconds interval, NewFiles onNewFiles) {
    if (m_pollTimer) {
        return;
    }
    print(u"Starting FTP polling every %1 seconds"_s.arg(
        QString::number(std::chrono::duration<double>(interval).count(), 'f', 1)));
    m_onNewFiles = std::move(onNewFiles);
    m_pollTimer = m_parts.clock.every(interval, [this] { beginPoll(); });
    beginPoll();
}

void FTPWatcher::stop() {
    m_stops.overtake();
    m_pollTimer.reset();
    print(u"Stopped FTP polling"_s);
}

void FTPWatcher::abandon() {
    m_client->abandon();
    m_ends.overtake();
    stop();
}

void FTPWatcher::beginPoll() {
    const StatusStore& status = m_parts.status;
    if (m_parts.ledger.isBusy() || status.ftpIsDownloading() || status.isProcessing()) {
        print(u"Skipping poll - download/processing already in progress"_s);
        return;
    }
    m_polls.spawn(poll(m_onNewFiles, m_stops.mark()));
}

QCoro::Task<> FTPWatcher::poll(NewFiles onNewFiles, Overtaking::Mark mark) {
    const TransferTurn turn(m_parts.ledger, co_await m_parts.ledger.enter());
    begin(u"Checking FTP server..."_s);
    const auto done = co_await attempt(pollOnce(onNewFiles, mark));
    if (!done) {
        fail(u"Error polling FTP: "_s, done.failure(), mark);
    } else {
        m_parts.status.setSourceTrouble(std::nullopt);
        m_parts.listener.allEnded(m_client->listingProblem());
    }
    end(mark);
}

QCoro::Task<> FTPWatcher::pollOnce(NewFiles onNewFiles, Overtaking::Mark mark) {
    const ServerFiles files = co_await look(u"Image files found: %1"_s);
    FetchPlan planned = co_await plan(files, FetchCare::poll);
    if (mark.isOvertaken()) {
        co_return;
    }
    m_parts.status.setFtpFilesFound(files.images.size());
    FetchRun(fetchParts(), planned, FetchCare::poll, mark).announce();
    if (!planned.isEmpty()) {
        const bool isStable = co_await waitForBatch(&planned);
        if (!isStable || mark.isOvertaken()) {
            co_return;
        }
    }
    FetchRun run(fetchParts(), planned, FetchCare::poll, mark);
    co_await run.execute();
    const QStringList images = co_await leftBehind(); // with what this poll has fetched
    if (mark.isOvertaken()) {
        co_return; // what has come is handed on by the next poll
    }
    run.conclude(images.size(), files.isEmpty());
    remark(planned, run);
    handOn(images, onNewFiles);
}

QCoro::Task<bool> FTPWatcher::waitForBatch(FetchPlan* plan) {
    m_parts.status.setFtpStatusMessage(u"Waiting for batch to finish uploading..."_s);
    const QStringList names = namesOf(plan->metadata) + namesOf(plan->images);
    const bool isStable = co_await m_client->waitForBatchStable(names, seconds(2), seconds(60));
    if (!isStable) {
        print(u"Batch did not stabilize, skipping download"_s);
        m_parts.status.setFtpStatusMessage(u"Batch upload incomplete, will retry"_s);
        co_return false;
    }
    print(u"Batch is stable, proceeding with downloads"_s);
    QHash<QString, qint64> sizes;
    const QList<FTPFileInfo> listing = co_await m_client->listFiles();
    for (const FTPFileInfo& entry : listing) {
        if (!entry.isDirectory && entry.size >= 1 && !sizes.contains(entry.name)) {
            sizes.insert(entry.name, entry.size);
        }
    }
    takeSizes(sizes, &plan->metadata);
    takeSizes(sizes, &plan->images);
    co_return true;
}

QCoro::Task<> FTPWatcher::downloadAllFiles(NewFiles onComplete) {
    const Overtaking::Mark mark = m_ends.mark();
    const TransferTurn turn(m_parts.ledger, co_await m_parts.ledger.enter());
    begin(u"Downloading all files from FTP server..."_s);
    const auto done = co_await attempt(downloadOnce(onComplete, mark));
    if (!done) {
        fail(u"Error downloading all files: "_s, done.failure(), mark);
    } else {
        m_parts.status.setSourceTrouble(std::nullopt);
        m_parts.listener.allEnded(m_client->listingProblem());
    }
    end(mark);
}

QCoro::Task<> FTPWatcher::downloadOnce(NewFiles onComplete, Overtaking::Mark mark) {
    const ServerFiles files = co_await look(u"[FTPWatcher] Manual download - Image files to download: %1"_s);
    for (const RefusedFile& file : files.refused) {
        m_parts.listener.ended({.path = m_destination.pathOf(file.name), .failure = file.reason});
    }
    const FetchPlan planned = co_await plan(files, FetchCare::download);
    if (mark.isOvertaken()) {
        co_return;
    }
    m_parts.status.setFtpFilesFound(files.images.size());
    FetchRun run(fetchParts(), planned, FetchCare::download, mark);
    run.announce();
    co_await run.execute();
    const QStringList images = co_await leftBehind(); // with what this download has fetched
    if (mark.isOvertaken()) {
        co_return;
    }
    run.conclude(images.size(), files.isEmpty());
    remark(planned, run);
    if (!images.isEmpty()) {
        handOn(images, onComplete);
    }
}

QCoro::Task<ServerFiles> FTPWatcher::look(QString imageLine) {
    const QList<FTPFileInfo> listing = co_await m_client->listFiles();
    const NameRules rules = co_await m_destination.prepare();
    const auto lines = std::make_shared<QStringList>();
    auto sort = [listing, rules, imageLine, lines] {
        const ServerFiles files = sortListing(listing, rules);
        *lines = linesOf(listing, files, imageLine);
        return files;
    };
    const ServerFiles files = co_await offMainThread(sort);
    co_await printInTurns(m_parts.log, *lines);
    co_return files;
}

QCoro::Task<FetchPlan> FTPWatcher::plan(ServerFiles files, FetchCare care) {
    FetchPlanning planning(fetchParts(), care);
    co_return co_await planning.execute(files);
}

QCoro::Task<QStringList> FTPWatcher::leftBehind() {
    constexpr qint64 oldest = 12 * 3600; // seconds: the next game has another roster
    const qint64 now = m_parts.clock.now().toSecsSinceEpoch();
    const QStringList names = m_parts.fetched.namesIn(m_destination.path());
    const QHash<QString, LocalCopy> copies = co_await m_destination.copiesOf(names);
    QStringList images;
    for (const QString& name : names) {
        const QString path = m_destination.pathOf(name);
        const LocalCopy copy = copies.value(name);
        const bool isTooOld = copy.exists && now - copy.modifiedAt > oldest;
        if (isTooOld) {
            print(u"%1 was fetched hours ago and is not captioned any more"_s.arg(name));
        }
        const bool isCaptioned = co_await m_parts.manifest.isProcessed(path); // by another program
        if (!copy.exists || isTooOld || isCaptioned) {
            m_parts.fetched.remove(path);
        } else if (!m_parts.ledger.isHandedOn(path)) {
            images.append(path);
        }
    }
    co_return images;
}

void FTPWatcher::remark(const FetchPlan& plan, const FetchRun& run) {
    const QString leftAlone = u"Captioned before, not fetched: "_s; // by their names
    if (m_parts.ledger.setLeftAlone(plan.leftAlone) && !plan.leftAlone.isEmpty()) {
        print(leftAlone + plan.leftAlone.join(u", "_s));
    }
    QStringList remarks{run.failureRemark(), m_client->listingProblem(),
                        plan.leftAlone.isEmpty() ? QString() : leftAlone + shortNameList(plan.leftAlone)};
    remarks.removeAll(QString());
    m_parts.status.setFtpRemarks(remarks);
}

void FTPWatcher::handOn(const QStringList& images, const NewFiles& onNewFiles) {
    for (const QString& image : images) {
        m_parts.ledger.handOn(image);
    }
    onNewFiles(images);
}

void FTPWatcher::begin(const QString& message) {
    StatusStore& status = m_parts.status;
    status.setFtpIsChecking(true);
    status.setFtpStatusMessage(message);
    status.setFtpFilesFound(0);
    status.setFtpFilesDownloaded(0);
    status.setFtpImagesDownloaded(0);
    status.setFtpMetadataDownloaded(0);
    status.setFtpDownloadProgress(0);
    status.setFtpTotalBytesToDownload(0);
    status.setFtpBytesDownloaded(0);
}

void FTPWatcher::fail(const QString& heading, const std::exception_ptr& failure,
                      const Overtaking::Mark& mark) {
    const auto error = failureAs<FTPError>(failure);
    const QString reason = error && !error->reason().isEmpty() ? u'\n' + error->reason() : QString();
    print(heading + wordsOf(failure) + reason);
    if (!mark.isOvertaken()) {
        m_parts.status.setFtpStatusMessage(u"Error: "_s + wordsOf(failure) + reason);
        m_parts.status.setSourceTrouble(u"The folder on the FTP server cannot be looked through."_s);
        m_parts.listener.allEnded(wordsOf(failure) + reason);
    }
}

void FTPWatcher::end(const Overtaking::Mark& mark) {
    m_parts.status.setFtpIsChecking(false);
    m_parts.status.setFtpIsDownloading(false);
    if (mark.isOvertaken()) {
        m_parts.status.setFtpRemarks({});
        m_parts.status.setFtpStatusMessage(std::nullopt);
    }
}

FetchParts FTPWatcher::fetchParts() {
    return {.client = *m_client,
            .destination = m_destination,
            .ledger = m_parts.ledger,
            .fetched = m_parts.fetched,
            .manifest = m_parts.manifest,
            .status = m_parts.status,
            .log = m_parts.log,
            .listener = m_parts.listener};
}

void FTPWatcher::print(const QString& words) {
    m_parts.log.print(u"[FTPWatcher] "_s + words);
}

} // namespace ostrelle
