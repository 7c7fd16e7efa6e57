// SPDX-License-Identifier: GPL-3.0-or-later
// Transfers from an FTP server on this machine, as the programs do them. Driven by the script `server` beside
// this file, which also runs other programs on the same files:
//   bench_server file PORT PATH FOLDER NAME BYTES   one file, as the client alone fetches it; not flushed
//   bench_server all PORT PATH FOLDER               the full download, each file flushed and put in its place
//   bench_server polls PORT PATH FOLDER COUNT       polls of a server whose files are all in the folder, and
//                                                   the same listing, only taken
// Each prints the milliseconds of each piece of work, and at the end what the main thread and the memory did.
#include "core/Error.h"
#include "platform/ConsoleLog.h"
#include "platform/SystemClock.h"
#include "standins/MemoryDefaults.h"
#include "transfer/ftp/CurlFtpStreams.h"
#include "transfer/ftp/FTPClient.h"
#include "transfer/ftp/StreamReader.h"
#include "transfer/remote/FTPWatcher.h"

#include <QCoreApplication>
#include <QCoroTask>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <chrono>
#include <cstdio>
#include <exception>
#include <memory>

#include "Heartbeat.h"
#include "ProcessMemory.h"

namespace ostrelle {
namespace {

using namespace Qt::StringLiterals;

const QString user = u"camera"_s;
const QString password = u"secret"_s;

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

/// A folder of the server and the folder here that it is fetched into, with the program's parts in between.
class Receiver {
public:
    Receiver(int port, QString path, QString folder)
        : m_port(port), m_path(std::move(path)), m_folder(std::move(folder)) {}

    std::unique_ptr<FTPClient> makeClient() {
        FtpAccount account{.host = u"127.0.0.1"_s,
                           .username = user,
                           .passwordProvider = [] { return password; },
                           .path = m_path,
                           .port = m_port};
        return std::make_unique<FTPClient>(std::move(account), ftpParts());
    }
    std::unique_ptr<FTPWatcher> makeWatcher() {
        return std::make_unique<FTPWatcher>(makeClient(), m_folder,
                                            FTPWatcherParts{.status = m_status,
                                                            .manifest = m_manifest,
                                                            .ledger = m_ledger,
                                                            .fetched = m_fetched,
                                                            .claims = m_claims,
                                                            .clock = m_clock,
                                                            .log = m_log,
                                                            .access = m_access,
                                                            .threads = m_threads});
    }
    QString pathOf(const QString& name) const { return m_folder + u'/' + name; }
    qint64 filesFound() const { return m_status.ftpFilesFound(); }
    qint64 filesDownloaded() const { return m_status.ftpFilesDownloaded(); }

    /// Takes the listing as the client does, but makes nothing of its bytes. Resumes with their number.
    QCoro::Task<qint64> takeListing() {
        StreamReader reader(
            ftpParts(),
            {.host = u"127.0.0.1"_s, .port = m_port, .path = m_path, .username = user, .password = password});
        reader.create();
        co_await reader.open();
        qint64 size = 0;
        StreamReader::Pass pass = StreamReader::Pass::nothing;
        while (pass != StreamReader::Pass::end) {
            pass = co_await reader.pass();
            size += reader.bytes().size();
        }
        if (size == 0 || !reader.failure().isEmpty()) {
            throw Error(u"The server gives no listing. "_s + reader.failure());
        }
        co_return size;
    }

private:
    FtpParts ftpParts() {
        return {.makeStream = [this](const FtpAddress& address) { return m_streams.make(address); },
                .clock = m_clock,
                .log = m_log,
                .access = m_access,
                .threads = m_threads,
                .status = m_status};
    }

    int m_port;
    QString m_path;
    QString m_folder;
    QTemporaryDir m_home;
    std::unique_ptr<std::FILE, CloseFile> m_sink{std::fopen("/dev/null", "w")};
    ConsoleLog m_log{m_sink.get()};
    SystemClock m_clock;
    MemoryDefaults m_defaults;
    AppEvents m_events;
    UnsandboxedAccess m_access;
    FolderThreads m_threads;
    CurlFtpStreams m_streams;
    StatusStore m_status{m_defaults, m_clock};
    ProcessedFilesManifest m_manifest{m_home.filePath(u"processed_files.json"_s), m_threads, m_clock, m_log,
                                      m_events};
    FetchLedger m_ledger{m_clock};
    FetchedImages m_fetched{m_defaults};
    ImageClaims m_claims{m_home.filePath(u"claims"_s)};
};

template <typename Condition>
void wait(const Condition& condition) {
    while (!condition()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

/// Milliseconds until the work is done.
template <typename Work>
double timed(const Work& work) {
    QElapsedTimer timer;
    timer.start();
    work();
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

void report(const char* work, double milliseconds) {
    std::printf("%s %.2f\n", work, milliseconds);
}

void fetchOne(Receiver& receiver, const QString& name, qint64 bytes) {
    const std::unique_ptr<FTPClient> client = receiver.makeClient();
    const DownloadTarget target{
        .path = receiver.pathOf(name), .isSecurityScoped = true, .expectedSize = bytes};
    const double time = timed([&] {
        QCoro::Task<Download> download = client->downloadFile(name, target, {});
        wait([&download] { return download.isReady(); });
        const Download done = QCoro::waitFor(std::move(download));
        if (done.bytes != bytes || !done.failure.isEmpty()) {
            throw Error(u"Only %1 of %2 bytes arrived. %3"_s.arg(done.bytes).arg(bytes).arg(done.failure));
        }
    });
    report("file", time);
}

void fetchAll(Receiver& receiver) {
    const std::unique_ptr<FTPWatcher> watcher = receiver.makeWatcher();
    const double time = timed([&] {
        const QCoro::Task<> download = watcher->downloadAllFiles([](const QStringList&) {});
        wait([&download] { return download.isReady(); });
    });
    if (receiver.filesDownloaded() == 0) {
        throw Error(u"No file has come."_s);
    }
    report("all", time);
}

/// Milliseconds of one poll.
double pollOnce(FTPWatcher& watcher) {
    bool isDone = false;
    const double time = timed([&] {
        watcher.start(std::chrono::hours(1), [&isDone](const QStringList&) { isDone = true; });
        wait([&isDone] { return isDone; });
    });
    watcher.stop();
    const QCoro::Task<> finished = watcher.finished();
    wait([&finished] { return finished.isReady(); });
    return time;
}

void poll(Receiver& receiver, int count) {
    const std::unique_ptr<FTPWatcher> watcher = receiver.makeWatcher();
    pollOnce(*watcher); // unmeasured, as it connects
    for (int number = 0; number < count; ++number) {
        report("listing", timed([&receiver] {
                   QCoro::Task<qint64> listing = receiver.takeListing();
                   wait([&listing] { return listing.isReady(); });
                   QCoro::waitFor(std::move(listing));
               }));
        report("poll", pollOnce(*watcher));
    }
    if (receiver.filesFound() == 0) {
        throw Error(u"The polls have seen no image."_s);
    }
}

int run(const QStringList& arguments) {
    const QString command = arguments.value(1);
    if (arguments.size() < 5) {
        std::fputs("Usage: bench_server file|all|polls PORT PATH FOLDER [NAME BYTES | COUNT]\n", stderr);
        return 2;
    }
    const QString path = arguments[3].endsWith(u'/') ? arguments[3] : arguments[3] + u'/';
    Receiver receiver(arguments[2].toInt(), path, arguments[4]);
    QCoreApplication::processEvents();
    const double before = processMegabytes("VmRSS");
    const Heartbeat heartbeat;
    if (command == u"file") {
        fetchOne(receiver, arguments.value(5), arguments.value(6).toLongLong());
    } else if (command == u"all") {
        fetchAll(receiver);
    } else {
        poll(receiver, arguments.value(5).toInt());
    }
    std::printf("ticks %d\nlate %d\nworst %.1f\nturn %.1f\nmemory %.1f\n", heartbeat.ticks(),
                heartbeat.late(), heartbeat.worst(), heartbeat.longestTurn(),
                processMegabytes("VmHWM") - before);
    return 0;
}

} // namespace
} // namespace ostrelle

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    try {
        return ostrelle::run(QCoreApplication::arguments());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_server: %s\n", error.what());
        return 1;
    }
}
