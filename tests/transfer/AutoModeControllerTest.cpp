// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/AutoModeController.h"

#include "support/LockedSecrets.h"
#include "transfer/LocalScanFixture.h"

#include <QCoreApplication>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::milliseconds debounce{500};
constexpr std::chrono::seconds second{1};
constexpr std::chrono::seconds pollInterval{10};

/// Auto mode is on and has everything that it requires, unless the test takes it away.
class AutoModeTest : public LocalScanTest {
protected:
    AutoModeTest() {
        settings.setFtpHost(u"ftp.example.org"_s);
        settings.setFtpUsername(u"sam"_s);
        settings.setFtpPassword(u"secret"_s);
        settings.setAutoMode(true);
    }

    void start() {
        controller->observeAutoModeSettings();
        clock.advance(debounce);
    }
    /// Starts the local source and waits for its first scan.
    void startLocal() {
        start();
        waitUntil([this] { return console.count(u"Scan complete"_s) == 1; });
    }
    qsizetype startCount() const { return console.count(u"Auto mode on - "_s); }
    std::unique_ptr<AutoModeController> controllerOf(SettingsStore& itsSettings) {
        return std::make_unique<AutoModeController>(AutoModeParts{.settings = itsSettings,
                                                                  .status = status,
                                                                  .defaults = defaults,
                                                                  .scan = scan,
                                                                  .remote = remote,
                                                                  .notifications = notifications,
                                                                  .threads = threads,
                                                                  .clock = clock,
                                                                  .log = console});
    }

    std::unique_ptr<AutoModeController> controller = controllerOf(settings);
};

TEST_F(AutoModeTest, ScansHalfASecondAfterTheStartAndThenEveryTenSeconds) {
    controller->observeAutoModeSettings();
    clock.advance(std::chrono::milliseconds(499));
    EXPECT_EQ(startCount(), 0);
    clock.advance(std::chrono::milliseconds(1));
    waitUntil([this] { return console.count(u"Scan complete"_s) == 1; });

    EXPECT_TRUE(isPrinted(u"Auto mode on - polling %1 every 10 seconds"_s.arg(ingest)));
    EXPECT_EQ(status.lastMessage(), u"Auto mode: Watching ingest"_s);
    EXPECT_EQ(status.nextScanCountdown(), 9);
    clock.advance(second * 9);
    EXPECT_EQ(status.nextScanCountdown(), 0);
    EXPECT_EQ(console.count(u"Polling folder..."_s), 0);
    clock.advance(second);
    EXPECT_TRUE(isPrinted(u"Polling folder..."_s));
    waitUntil([this] { return console.count(u"Scan complete"_s) == 2; });
}

TEST_F(AutoModeTest, TheCountdownOfTheRemoteSourceStaysAtZeroUntilAPollEnds) {
    settings.setSourceType(SourceType::ftp);
    start();
    EXPECT_TRUE(isPrinted(u"Auto mode on - watching FTP server ftp.example.org"_s));
    EXPECT_EQ(status.lastMessage(), u"Auto mode: Watching FTP server"_s);
    EXPECT_EQ(status.nextScanCountdown(), 9);
    clock.advance(second * 30);
    EXPECT_EQ(status.nextScanCountdown(), 0);
    controller->restartCountdown();
    EXPECT_EQ(status.nextScanCountdown(), 9);
    EXPECT_EQ(console.count(u"Polling folder..."_s), 0) << "the watcher has its own timer";
}

/// What auto mode shows and logs when it cannot start.
struct Refusal {
    QString message;
    QString logLine;
    QString missing; ///< what the notification calls it
};

struct RefusalCase {
    const char* name;
    SourceType source;
    void (*takeAway)(SettingsStore&, DefaultsStore&);
    Refusal refusal;
};

void PrintTo(const RefusalCase& row, std::ostream* stream) {
    *stream << row.name;
}

const Refusal keyMissing{u"Auto mode: OpenAI API key required"_s, {}, u"OpenAI API Key"_s};
const Refusal ftpIncomplete{
    u"Auto mode: FTP configuration incomplete"_s, u"Auto mode on but FTP configuration incomplete"_s, {}};
const Refusal localRosterMissing{u"Auto mode: Code Replacements File required"_s,
                                 u"Auto mode: No code replacements file found (manual or auto-discovered)"_s,
                                 u"Code Replacements File"_s};
const Refusal remoteRosterMissing{u"Auto mode: Code Replacements File required"_s,
                                  u"Auto mode: Code Replacements File required for FTP"_s,
                                  u"Code Replacements File"_s};

void emptyKey(SettingsStore&, DefaultsStore& defaults) {
    defaults.set(apiKeyName, u""_s);
}
void noRoster(SettingsStore& settings, DefaultsStore&) {
    settings.setCodeReplacementsFile({});
}
void nothing(SettingsStore& settings, DefaultsStore& defaults) {
    defaults.remove(apiKeyName);
    settings.setFtpHost(u""_s);
    settings.setCodeReplacementsFile({});
}

const RefusalCase refusals[] = {
    {"local, empty key", SourceType::local, emptyKey, keyMissing},
    {"local, nothing", SourceType::local, nothing, keyMissing},
    {"local, no roster", SourceType::local, noRoster, localRosterMissing},
    {"remote, empty key", SourceType::ftp, emptyKey, keyMissing},
    {"remote, nothing", SourceType::ftp, nothing, keyMissing},
    {"remote, no host", SourceType::ftp, [](auto& settings, auto&) { settings.setFtpHost(u""_s); },
     ftpIncomplete},
    {"remote, no user", SourceType::ftp, [](auto& settings, auto&) { settings.setFtpUsername(u""_s); },
     ftpIncomplete},
    {"remote, no password", SourceType::ftp, [](auto& settings, auto&) { settings.setFtpPassword(u""_s); },
     ftpIncomplete},
    {"remote, no roster", SourceType::ftp, noRoster, remoteRosterMissing},
};

class AutoModeRefusalTest : public AutoModeTest, public testing::WithParamInterface<RefusalCase> {};

TEST_P(AutoModeRefusalTest, SaysWhyAndTurnsItselfOff) {
    const auto& [name, source, takeAway, refusal] = GetParam();
    settings.setSourceType(source);
    takeAway(settings, defaults);
    if (source == SourceType::ftp) {
        write(u"code_replacements.txt"_s); // of no help to the remote source
    }
    start();
    waitUntil([this] { return !settings.autoMode(); });

    EXPECT_EQ(status.lastMessage(), refusal.message);
    EXPECT_EQ(status.nextScanCountdown(), std::nullopt);
    EXPECT_EQ(printed().join(u'\n'),
              refusal.logLine.isEmpty() ? QString() : u"[AppDelegate] "_s + refusal.logLine);
    const QString body = u" is missing. Please configure it in Settings to enable auto-processing."_s;
    EXPECT_EQ(notified().join(u'\n'), refusal.missing.isEmpty() ? QString() : refusal.missing + body);
    EXPECT_EQ(remote.starts, 0);

    clock.advance(debounce);
    EXPECT_EQ(status.lastMessage(), u"Auto mode: Off"_s);
    EXPECT_EQ(clock.waiting(), 0) << "no timer is left";
}

INSTANTIATE_TEST_SUITE_P(Table, AutoModeRefusalTest, testing::ValuesIn(refusals));

TEST_F(AutoModeTest, ARosterInTheFolderServesTheLocalSource) {
    settings.setCodeReplacementsFile({});
    write(u"code_replacements.txt"_s);
    start();
    waitUntil([this] { return startCount() == 1; });
    EXPECT_TRUE(settings.autoMode());
}

TEST_F(AutoModeTest, WaitsForAFolder) {
    settings.setIngestFolder({});
    start();
    EXPECT_TRUE(isPrinted(u"Auto mode on but no folder selected"_s));
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
    KeychainHelper lockedKeychain(locked, console);
    settings.setSourceType(SourceType::ftp);
    SettingsStore lockedSettings(defaults, lockedKeychain, program.references, console);
    lockedSettings.setCodeReplacementsFile(folder.filePath(u"roster.txt"_s));
    const auto waiting = controllerOf(lockedSettings);
    waiting->observeAutoModeSettings();
    clock.advance(debounce);
    clock.advance(std::chrono::hours(1));
    EXPECT_EQ(status.lastMessage(), u"Auto mode: Waiting for the keyring..."_s);
    EXPECT_TRUE(lockedSettings.autoMode());
    locked.unlock();
    waitUntil([this] { return remote.starts == 1; });
    EXPECT_EQ(status.lastMessage(), u"Auto mode: Watching FTP server"_s);
}

TEST_F(AutoModeTest, ABurstOfChangesOfSixSettingsIsOneRestartWithTheLatestValues) {
    settings.setSourceType(SourceType::ftp);
    start();
    settings.setFtpPassword(u"other"_s);
    settings.setFtpUsername(u"other"_s);
    settings.setFtpPath(u"/other"_s);
    settings.setFtpPort(2121);
    settings.setSport(Sport::soccer);
    clock.advance(debounce);
    EXPECT_EQ(remote.starts, 1);

    const std::chrono::milliseconds step{200};
    settings.setFtpHost(u"a.example.org"_s);
    clock.advance(step);
    settings.setFtpHost(u"b.example.org"_s);
    clock.advance(debounce - step);
    EXPECT_EQ(remote.starts, 1);
    clock.advance(step);
    EXPECT_EQ(remote.starts, 2);
    EXPECT_TRUE(isPrinted(u"Auto mode on - watching FTP server b.example.org"_s));
    settings.setDestinationFolder(ingest);
    clock.advance(debounce);
    EXPECT_EQ(remote.starts, 3);
    settings.setCodeReplacementsFile(path(u"other.txt"_s));
    clock.advance(debounce);
    EXPECT_EQ(remote.starts, 4);
    clock.advance(second * 5);
    EXPECT_EQ(remote.starts, 4);
}

TEST_F(AutoModeTest, AChangeOfSourceLeavesNothingOfTheOther) {
    startLocal();
    settings.setSourceType(SourceType::ftp);
    clock.advance(debounce);
    EXPECT_TRUE(remote.isRunning);
    clock.advance(pollInterval * 2);
    EXPECT_EQ(console.count(u"Polling folder..."_s), 0);

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
    EXPECT_EQ(console.count(u"Polling folder..."_s), 1);
}

TEST_F(AutoModeTest, SwitchedOffItSendsAwayWhatWaitsForItsTurn) {
    for (int image = 0; image < 30; ++image) {
        write(u"%1.JPG"_s.arg(image));
    }
    startLocal();
    duration = std::chrono::seconds(60);
    rest(CaptionTurns::imagesAtOnce);
    settings.setAutoMode(false);
    clock.advance(debounce);
    EXPECT_TRUE(isPrinted(u"Auto mode off - stopped watching"_s));
    EXPECT_EQ(status.lastMessage(), u"Auto mode: Off"_s);
    finishAll();
    EXPECT_EQ(ended.size(), CaptionTurns::imagesAtOnce);
    EXPECT_EQ(console.count(u"SUCCESS"_s), CaptionTurns::imagesAtOnce);
    EXPECT_EQ(console.count(u"FAILED"_s), 0);
    for (int image = 0; image < 30; ++image) {
        EXPECT_FALSE(tracker.isProcessing(u"%1.JPG"_s.arg(image)));
        EXPECT_FALSE(tracker.timeSinceFailure(u"%1.JPG"_s.arg(image)));
    }
}

TEST_F(AutoModeTest, AStartThatAHangingShareHoldsUpIsOvertaken) {
    settings.setCodeReplacementsFile({});
    HangingThreads share(threads.of(ingest));
    start();
    settings.setAutoMode(false);
    clock.advance(debounce);
    share.recover();
    await(scan.finished());
    threads.of(ingest)->waitForDone();
    QCoreApplication::processEvents();
    EXPECT_EQ(startCount(), 0);
    EXPECT_EQ(status.lastMessage(), u"Auto mode: Off"_s);
    EXPECT_TRUE(notified().isEmpty());
}

TEST_F(AutoModeTest, NothingHappensOnceItIsDestroyed) {
    settings.setCodeReplacementsFile({});
    HangingThreads share(threads.of(ingest));
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
