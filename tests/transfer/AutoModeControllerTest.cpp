// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/AutoModeController.h"

#include "product/ApiKey.h"
#include "support/LockedSecrets.h"
#include "transfer/LocalScanFixture.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::milliseconds debounce{500};
constexpr std::chrono::seconds second{1};
constexpr std::chrono::seconds pollInterval{10};

class RemoteStandIn : public RemoteSource {
public:
    void start() override {
        EXPECT_FALSE(isRunning);
        isRunning = true;
        ++starts;
    }
    void stop() override { isRunning = false; }

    bool isRunning = false;
    int starts = 0;
};

class RecordingCenter : public NotificationCenter {
public:
    QCoro::Task<bool> isAvailable() override { co_return true; }
    QCoro::Task<> post(DesktopNotification notification) override {
        bodies.append(notification.body);
        co_return;
    }

    QStringList bodies;
};

/// Everything that auto mode requires is there, and auto mode is on, unless the test takes it away.
class AutoModeTest : public LocalScanTest {
protected:
    AutoModeTest() {
        defaults.set(apiKeyName, u"test-key"_s);
        settings.setCodeReplacementsFile(path(u"roster.txt"_s));
        settings.setFtpHost(u"ftp.example.org"_s);
        settings.setFtpUsername(u"sam"_s);
        settings.setFtpPassword(u"secret"_s);
        settings.setAutoMode(true);
    }

    void start() {
        controller->observeAutoModeSettings();
        clock.advance(debounce);
    }
    /// Waits for the start of the local source, which looks at the folder first.
    void startLocal() {
        start();
        waitUntil([this] { return log.count(u"Scan complete"_s) == 1; });
    }
    qsizetype startCount() const { return log.count(u"Auto mode on - "_s); }

    StatusStore status{defaults, clock};
    RemoteStandIn remote;
    RecordingCenter center;
    NotificationManager notifications{center, log};
    std::unique_ptr<AutoModeController> controller =
        std::make_unique<AutoModeController>(AutoModeParts{.settings = settings,
                                                           .status = status,
                                                           .defaults = defaults,
                                                           .scan = scan,
                                                           .remote = remote,
                                                           .notifications = notifications,
                                                           .threads = threads,
                                                           .clock = clock,
                                                           .log = log});
};

TEST_F(AutoModeTest, BeginsHalfASecondAfterTheStartWithAScanAtOnce) {
    controller->observeAutoModeSettings();
    clock.advance(std::chrono::milliseconds(499));
    EXPECT_EQ(startCount(), 0);
    clock.advance(std::chrono::milliseconds(1));
    waitUntil([this] { return log.count(u"Scan complete"_s) == 1; });

    EXPECT_TRUE(log.has(u"[AppDelegate] Auto mode on - polling %1 every 10 seconds"_s.arg(ingest)));
    EXPECT_EQ(status.lastMessage(), u"Auto mode: Watching ingest"_s);
    EXPECT_EQ(status.nextScanCountdown(), 9);
    EXPECT_EQ(log.count(u"Polling folder..."_s), 0);
}

TEST_F(AutoModeTest, ScansEveryTenSecondsAndCountsDown) {
    startLocal();
    clock.advance(second * 8);
    EXPECT_EQ(status.nextScanCountdown(), 1);
    clock.advance(second);
    EXPECT_EQ(status.nextScanCountdown(), 0);
    EXPECT_EQ(log.count(u"Polling folder..."_s), 0);
    clock.advance(second);
    EXPECT_TRUE(log.has(u"[AppDelegate] Polling folder..."_s));
    waitUntil([this] { return log.count(u"Scan complete"_s) == 2; });
}

TEST_F(AutoModeTest, TheCountdownOfTheRemoteSourceStaysAtZeroUntilAPollEnds) {
    settings.setSourceType(SourceType::ftp);
    start();
    EXPECT_TRUE(log.has(u"[AppDelegate] Auto mode on - watching FTP server ftp.example.org"_s));
    EXPECT_EQ(status.lastMessage(), u"Auto mode: Watching FTP server"_s);
    EXPECT_EQ(status.nextScanCountdown(), 9);
    clock.advance(second * 30);
    EXPECT_EQ(status.nextScanCountdown(), 0);
    controller->restartCountdown();
    EXPECT_EQ(status.nextScanCountdown(), 9);
    EXPECT_EQ(log.count(u"Polling folder..."_s), 0) << "the watcher has its own timer";
}

TEST_F(AutoModeTest, AnHourSleptThroughIsOneScan) {
    startLocal();
    clock.setNow(clock.now().addSecs(3600));
    clock.advance(std::chrono::seconds(0));
    EXPECT_EQ(log.count(u"Polling folder..."_s), 1);
    EXPECT_EQ(status.nextScanCountdown(), 9);
}

struct Refusal {
    const char* name;
    SourceType source;
    std::function<void(SettingsStore&, DefaultsStore&)> takeAway;
    QString message;
    QString logLine;
    QString missing; ///< what the notification calls it
};

void PrintTo(const Refusal& refusal, std::ostream* stream) {
    *stream << refusal.name;
}

const QString keyMessage = u"Auto mode: OpenAI API key required"_s;
const QString rosterMessage = u"Auto mode: Code Replacements File required"_s;
const QString ftpMessage = u"Auto mode: FTP configuration incomplete"_s;
const QString ftpLine = u"[AppDelegate] Auto mode on but FTP configuration incomplete"_s;
const auto noKey = [](SettingsStore&, DefaultsStore& defaults) { defaults.remove(apiKeyName); };
const auto emptyKey = [](SettingsStore&, DefaultsStore& defaults) { defaults.set(apiKeyName, u""_s); };
const auto noRoster = [](SettingsStore& settings, DefaultsStore&) { settings.setCodeReplacementsFile({}); };
const auto nothing = [](SettingsStore& settings, DefaultsStore& defaults) {
    defaults.remove(apiKeyName);
    settings.setFtpHost(u""_s);
    settings.setCodeReplacementsFile({});
};

const Refusal refusals[] = {
    {"local, no key", SourceType::local, noKey, keyMessage, {}, u"OpenAI API Key"_s},
    {"local, empty key", SourceType::local, emptyKey, keyMessage, {}, u"OpenAI API Key"_s},
    {"local, nothing", SourceType::local, nothing, keyMessage, {}, u"OpenAI API Key"_s},
    {"local, no roster", SourceType::local, noRoster, rosterMessage,
     u"[AppDelegate] Auto mode: No code replacements file found (manual or auto-discovered)"_s,
     u"Code Replacements File"_s},
    {"remote, empty key", SourceType::ftp, emptyKey, keyMessage, {}, u"OpenAI API Key"_s},
    {"remote, nothing", SourceType::ftp, nothing, keyMessage, {}, u"OpenAI API Key"_s},
    {"remote, no host",
     SourceType::ftp,
     [](auto& settings, auto&) { settings.setFtpHost(u""_s); },
     ftpMessage,
     ftpLine,
     {}},
    {"remote, no user",
     SourceType::ftp,
     [](auto& settings, auto&) { settings.setFtpUsername(u""_s); },
     ftpMessage,
     ftpLine,
     {}},
    {"remote, no password",
     SourceType::ftp,
     [](auto& settings, auto&) { settings.setFtpPassword(u""_s); },
     ftpMessage,
     ftpLine,
     {}},
    {"remote, no roster", SourceType::ftp, noRoster, rosterMessage,
     u"[AppDelegate] Auto mode: Code Replacements File required for FTP"_s, u"Code Replacements File"_s},
};

class AutoModeRefusalTest : public AutoModeTest, public testing::WithParamInterface<Refusal> {};

TEST_P(AutoModeRefusalTest, SaysWhyAndTurnsItselfOff) {
    const Refusal& refusal = GetParam();
    settings.setSourceType(refusal.source);
    refusal.takeAway(settings, defaults);
    if (refusal.source == SourceType::ftp) {
        write(u"code_replacements.txt"_s); // of no help to the remote source
    }
    start();
    waitUntil([this] { return !settings.autoMode(); });

    EXPECT_EQ(status.lastMessage(), refusal.message);
    EXPECT_EQ(status.nextScanCountdown(), std::nullopt);
    EXPECT_EQ(log.lines.filter(u"[AppDelegate]"_s),
              refusal.logLine.isEmpty() ? QStringList() : QStringList(refusal.logLine));
    const QString body =
        refusal.missing + u" is missing. Please configure it in Settings to enable auto-processing."_s;
    EXPECT_EQ(center.bodies, refusal.missing.isEmpty() ? QStringList() : QStringList(body));
    EXPECT_EQ(remote.starts, 0);

    clock.advance(debounce);
    EXPECT_EQ(status.lastMessage(), u"Auto mode: Off"_s);
    EXPECT_EQ(clock.waiting(), 0) << "no timer is left";
}

INSTANTIATE_TEST_SUITE_P(Table, AutoModeRefusalTest, testing::ValuesIn(refusals));

TEST_F(AutoModeTest, ARosterInTheFolderServesTheLocalSource) {
    for (const char16_t* name :
         {u"code-replacements.txt", u"code_replacements.txt", u"codereplacements.txt"}) {
        settings.setCodeReplacementsFile({});
        write(QString::fromUtf16(name));
        const qsizetype before = startCount();
        controller->updateAutoMode(true, SourceType::local, ingest);
        waitUntil([&] { return startCount() > before; });
        QFile::remove(path(QString::fromUtf16(name)));
    }
    EXPECT_TRUE(settings.autoMode());
}

TEST_F(AutoModeTest, WaitsForAFolder) {
    settings.setIngestFolder({});
    start();
    EXPECT_TRUE(log.has(u"[AppDelegate] Auto mode on but no folder selected"_s));
    EXPECT_EQ(status.lastMessage(), u"Auto mode: No folder selected"_s);
    EXPECT_TRUE(settings.autoMode());
    EXPECT_EQ(clock.waiting(), 0);

    settings.setIngestFolder(ingest);
    clock.advance(debounce);
    EXPECT_EQ(status.lastMessage(), u"Auto mode: Watching ingest"_s);
}

TEST_F(AutoModeTest, ALockedKeyringIsWaitedForAndTurnsNothingOff) {
    LockedSecrets locked;
    locked.secrets.insert(u"com.tobinvasquel.OstrelleCaptions/FTPPassword"_s, u"secret"_s);
    KeychainHelper lockedKeychain(locked, log);
    settings.setSourceType(SourceType::ftp);
    SettingsStore lockedSettings(defaults, lockedKeychain, references, log);
    lockedSettings.setCodeReplacementsFile(path(u"roster.txt"_s));
    AutoModeController waiting({.settings = lockedSettings,
                                .status = status,
                                .defaults = defaults,
                                .scan = scan,
                                .remote = remote,
                                .notifications = notifications,
                                .threads = threads,
                                .clock = clock,
                                .log = log});
    waiting.observeAutoModeSettings();
    clock.advance(debounce);
    clock.advance(std::chrono::hours(1));
    EXPECT_EQ(status.lastMessage(), u"Auto mode: Waiting for the keyring..."_s);
    EXPECT_TRUE(lockedSettings.autoMode());
    locked.unlock();
    waitUntil([this] { return remote.starts == 1; });
    EXPECT_EQ(status.lastMessage(), u"Auto mode: Watching FTP server"_s);
}

TEST_F(AutoModeTest, ABurstOfChangesIsOneRestartWithTheLatestValues) {
    settings.setSourceType(SourceType::ftp);
    start();
    const std::chrono::milliseconds step{200};
    for (const char16_t* host : {u"a.example.org", u"b.example.org", u"c.example.org"}) {
        settings.setFtpHost(QString::fromUtf16(host));
        clock.advance(step);
    }
    EXPECT_EQ(remote.starts, 1);
    clock.advance(debounce - step);
    EXPECT_EQ(remote.starts, 2);
    EXPECT_TRUE(log.has(u"[AppDelegate] Auto mode on - watching FTP server c.example.org"_s));
    clock.advance(second * 5);
    EXPECT_EQ(remote.starts, 2);
}

TEST_F(AutoModeTest, OnlySixSettingsRestartIt) {
    settings.setSourceType(SourceType::ftp);
    start();
    settings.setFtpPassword(u"other"_s);
    settings.setFtpUsername(u"other"_s);
    settings.setFtpPath(u"/other"_s);
    settings.setFtpPort(2121);
    settings.setSport(Sport::soccer);
    clock.advance(debounce);
    EXPECT_EQ(remote.starts, 1);

    settings.setDestinationFolder(ingest);
    clock.advance(debounce);
    EXPECT_EQ(remote.starts, 2);
    settings.setCodeReplacementsFile(path(u"other.txt"_s));
    clock.advance(debounce);
    EXPECT_EQ(remote.starts, 3);
}

TEST_F(AutoModeTest, AChangeOfSourceLeavesNothingOfTheOther) {
    startLocal();
    settings.setSourceType(SourceType::ftp);
    clock.advance(debounce);
    EXPECT_TRUE(remote.isRunning);
    clock.advance(pollInterval * 2);
    EXPECT_EQ(log.count(u"Polling folder..."_s), 0);

    status.setFtpStatusMessage(u"Downloading"_s);
    status.setFtpIsChecking(true);
    status.setFtpIsDownloading(true);
    status.setFtpFilesFound(3);
    status.setFtpFilesDownloaded(2);
    settings.setSourceType(SourceType::local);
    clock.advance(debounce);
    EXPECT_FALSE(remote.isRunning);
    EXPECT_EQ(status.ftpStatusMessage(), std::nullopt);
    EXPECT_FALSE(status.ftpIsChecking() || status.ftpIsDownloading());
    EXPECT_EQ(status.ftpFilesFound() + status.ftpFilesDownloaded(), 0);
    clock.advance(pollInterval);
    EXPECT_EQ(log.count(u"Polling folder..."_s), 1);
}

TEST_F(AutoModeTest, TurningItOffBeginsNoFurtherImage) {
    write(u"a.JPG"_s);
    startLocal();
    EXPECT_TRUE(tracker.isProcessing(u"a.JPG"_s));
    settings.setAutoMode(false);
    clock.advance(debounce);
    EXPECT_TRUE(log.has(u"[AppDelegate] Auto mode off - stopped watching"_s));
    EXPECT_EQ(status.lastMessage(), u"Auto mode: Off"_s);
    finishAll();
    EXPECT_TRUE(captioning.begun.isEmpty());
    EXPECT_FALSE(tracker.isProcessing(u"a.JPG"_s));
}

TEST_F(AutoModeTest, SwitchedOffItSendsAwayWhatWaitsForItsTurn) {
    for (int image = 0; image < 30; ++image) {
        write(u"%1.JPG"_s.arg(image));
    }
    startLocal();
    captioning.duration = std::chrono::seconds(60);
    rest(CaptionTurns::imagesAtOnce);
    settings.setAutoMode(false);
    clock.advance(debounce);
    finishAll();
    EXPECT_EQ(captioning.ended.size(), CaptionTurns::imagesAtOnce);
    EXPECT_EQ(log.count(u"SUCCESS"_s), CaptionTurns::imagesAtOnce);
    EXPECT_EQ(log.count(u"FAILED"_s), 0);
    for (int image = 0; image < 30; ++image) {
        EXPECT_FALSE(tracker.isProcessing(u"%1.JPG"_s.arg(image)));
        EXPECT_FALSE(tracker.timeSinceFailure(u"%1.JPG"_s.arg(image)));
    }
}

TEST_F(AutoModeTest, AnotherFolderTakesTheOldOnesQueueAway) {
    write(u"a.JPG"_s);
    startLocal();
    const QString other = folder.filePath(u"other"_s);
    QDir().mkpath(other);
    QFile::copy(path(u"a.JPG"_s), other + u"/b.JPG"_s);
    settings.setIngestFolder(other);
    clock.advance(debounce);
    finishAll();
    EXPECT_EQ(captioning.begun, QStringList(u"b.JPG"_s));
}

TEST_F(AutoModeTest, AStartThatAHangingShareHoldsUpIsOvertaken) {
    settings.setCodeReplacementsFile({});
    HangingFolder share(threads, ingest);
    start();
    settings.setAutoMode(false);
    clock.advance(debounce);
    share.recover();
    await(scan.finished());
    threads.of(ingest)->waitForDone();
    QCoreApplication::processEvents();
    EXPECT_EQ(startCount(), 0);
    EXPECT_EQ(status.lastMessage(), u"Auto mode: Off"_s);
    EXPECT_TRUE(center.bodies.isEmpty());
}

TEST_F(AutoModeTest, NothingHappensOnceItIsDestroyed) {
    settings.setCodeReplacementsFile({});
    HangingFolder share(threads, ingest);
    start();
    settings.setFtpHost(u"other.example.org"_s);
    controller.reset();
    share.recover();
    threads.of(ingest)->waitForDone();
    QCoreApplication::processEvents();
    clock.advance(pollInterval);
    EXPECT_EQ(startCount(), 0);
    EXPECT_TRUE(settings.autoMode());
    EXPECT_EQ(clock.waiting(), 0);
}

} // namespace

} // namespace ostrelle
