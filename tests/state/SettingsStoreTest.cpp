// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/SettingsStore.h"

#include "platform/PathReferences.h"
#include "standins/MemoryDefaults.h"
#include "state/SlowSecrets.h"
#include "support/Await.h"
#include "support/LockedSecrets.h"
#include "support/RecordingLog.h"
#include "support/VirtualClock.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QMetaProperty>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QThread>
#include <functional>
#include <memory>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

using OptionalText = std::optional<QString>;

const QString passwordItem = u"com.tobinvasquel.OstrelleCaptions/FTPPassword"_s;

QList<QMetaProperty> fields() {
    const QMetaObject& type = SettingsStore::staticMetaObject;
    QList<QMetaProperty> result;
    for (int index = type.propertyOffset(); index < type.propertyCount(); ++index) {
        result.append(type.property(index));
    }
    return result;
}

/// Without any stored value: off, empty or the first case, but for these.
QVariant defaultOf(const QMetaProperty& field) {
    const QMap<QByteArray, QVariant> defaults = {
        {"fallbackBehavior", QVariant::fromValue(FallbackBehavior::attemptCaption)},
        {"sport", QVariant::fromValue(Sport::football)},
        {"team1Color", u"Blue"_s},
        {"team2Color", u"White"_s},
        {"alwaysOverwriteCaptions", true},
        {"appendCreditToCaption", true},
        {"ftpPath", u"/"_s},
        {"ftpPort", qint64(21)},
    };
    return defaults.value(field.name(), QVariant(field.metaType()));
}

class SettingsStoreTest : public testing::Test {
protected:
    SettingsStoreTest() { startOver({}); }

    /// The program starts anew, over what is stored.
    void start() {
        settings.reset();
        settings = std::make_unique<SettingsStore>(defaults, keychain, references, log);
    }
    void startOver(const QMap<QString, QVariant>& stored) {
        settings.reset();
        defaults.values = stored;
        log.lines.clear();
        start();
        nextTurn();
    }
    /// Lets everything that is under way end.
    void nextTurn() {
        secrets.end();
        QCoreApplication::processEvents();
        if (settings) {
            await(settings->pathsSettled());
        }
    }

    QString makeFolder(const QString& name) const {
        QDir(folder.path()).mkdir(name);
        return folder.filePath(name);
    }

    QTemporaryDir folder;
    VirtualClock clock;
    MemoryDefaults defaults;
    SlowSecrets secrets{clock};
    RecordingLog log;
    PathReferences references;
    KeychainHelper keychain{secrets, log};
    std::unique_ptr<SettingsStore> settings;
};

TEST_F(SettingsStoreTest, TheFirstStartHasDefaultsAndWritesThreeOfThem) {
    for (const QMetaProperty& field : fields()) {
        EXPECT_EQ(field.read(settings.get()), defaultOf(field)) << field.name();
    }
    EXPECT_EQ(defaults.values, (QMap<QString, QVariant>{{u"alwaysOverwriteCaptions"_s, true},
                                                        {u"appendCreditToCaption"_s, true},
                                                        {u"ftpPort"_s, qint64(21)}}));
    EXPECT_TRUE(secrets.secrets.isEmpty());
}

TEST_F(SettingsStoreTest, EachFieldTellsOfAChangeOnceIsStoredUnderItsNameAndSurvivesARestart) {
    const QString path = makeFolder(u"field"_s);
    const auto folderValue = QVariant::fromValue(OptionalText(path));
    const QVariant reference = references.make(path);
    const QVariant nothing; // is stored
    const QMap<QString, std::pair<QVariant, QVariant>> valuesAndWhatIsStored = {
        {u"ingestFolder"_s, {folderValue, reference}},
        {u"codeReplacementsFile"_s, {folderValue, reference}},
        {u"destinationFolder"_s, {folderValue, reference}},
        {u"fallbackBehavior"_s, {QVariant::fromValue(FallbackBehavior::omitCaption), u"omitCaption"_s}},
        {u"sport"_s, {QVariant::fromValue(Sport::horseRacing), u"horseRacing"_s}},
        {u"sourceType"_s, {QVariant::fromValue(SourceType::ftp), u"ftp"_s}},
        {u"transferProtocol"_s, {QVariant::fromValue(TransferProtocol::sftp), u"sftp"_s}},
        {u"team1Color"_s, {u""_s, u""_s}}, // an empty text is a value
        {u"ftpPort"_s, {qint64(70'000), qint64(70'000)}},
        {u"ftpPassword"_s, {u"secret"_s, nothing}},
        {u"captionStyle"_s, {QVariant::fromValue(CaptionStyle::gettySports), nothing}},
        {u"hasAPIKey"_s, {true, nothing}},
        {u"ftpConnectionStatus"_s, {QVariant::fromValue(OptionalText(u"Connected"_s)), nothing}},
    };
    const QStringList ofThisRunOnly = {u"captionStyle"_s, u"hasAPIKey"_s, u"ftpConnectionStatus"_s};
    for (const QMetaProperty& field : fields()) {
        SCOPED_TRACE(field.name());
        startOver({});
        const QString name = QString::fromLatin1(field.name());
        const QVariant other =
            field.typeId() == QMetaType::Bool ? QVariant(!defaultOf(field).toBool()) : name;
        const auto [value, stored] = valuesAndWhatIsStored.value(name, {other, other});
        const QSignalSpy changes(settings.get(), field.notifySignal());
        field.write(settings.get(), value);
        field.write(settings.get(), value);
        EXPECT_EQ(changes.size(), 1);
        EXPECT_EQ(field.read(settings.get()), value);
        nextTurn();
        EXPECT_EQ(defaults.values.value(name), stored);
        start();
        nextTurn();
        EXPECT_EQ(field.read(settings.get()), ofThisRunOnly.contains(name) ? defaultOf(field) : value);
    }
    EXPECT_EQ(log.lines, QStringList());
}

TEST_F(SettingsStoreTest, WhatComesFromElsewhereIsRead) {
    startOver({{u"captionStyle"_s, u"simple"_s}, {u"OPENAI_API_KEY"_s, u"sk-test"_s}});
    EXPECT_EQ(settings->captionStyle(), CaptionStyle::simple);
    EXPECT_TRUE(settings->hasAPIKey());
    startOver({{u"OPENAI_API_KEY"_s, u""_s}});
    EXPECT_FALSE(settings->hasAPIKey());
}

TEST_F(SettingsStoreTest, AnUnknownStoredCaseCountsAsAbsentAndStays) {
    const QMap<QString, QVariant> stored = {
        {u"sport"_s, u"cricket"_s},           {u"captionStyle"_s, u"APSPORTS"_s},
        {u"fallbackBehavior"_s, true},        {u"sourceType"_s, u"cloud"_s},
        {u"transferProtocol"_s, u""_s},       {u"ftpPort"_s, qint64(21)},
        {u"alwaysOverwriteCaptions"_s, true}, {u"appendCreditToCaption"_s, true},
    };
    startOver(stored);
    for (const QMetaProperty& field : fields()) {
        EXPECT_EQ(field.read(settings.get()), defaultOf(field)) << field.name();
    }
    EXPECT_EQ(defaults.values, stored);
    EXPECT_EQ(log.lines, QStringList());
}

TEST_F(SettingsStoreTest, ProtocolAndPortAfterAStart) {
    const struct {
        QString source;
        QString protocol;
        QVariant port;
        TransferProtocol expectedProtocol;
        qint64 expectedPort;
    } rows[] = {
        {u"local"_s, u"sftp"_s, qint64(21), TransferProtocol::sftp, 21},
        {u"local"_s, u"sftp"_s, QVariant(), TransferProtocol::sftp, 22},
        {u"local"_s, u"sftp"_s, u"2222"_s, TransferProtocol::sftp, 22}, // no integer
        {u"ftp"_s, u"sftp"_s, qint64(22), TransferProtocol::ftp, 21},
        {u"ftp"_s, u"sftp"_s, qint64(2222), TransferProtocol::ftp, 2222},
        {u"ftp"_s, u"sftp"_s, QVariant(), TransferProtocol::ftp, 21},
        {u"ftp"_s, u"ftp"_s, qint64(22), TransferProtocol::ftp, 22}, // as it was: no protocol has changed
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(qPrintable(row.source + u' ' + row.protocol + u' ' + row.port.toString()));
        startOver(
            {{u"sourceType"_s, row.source}, {u"transferProtocol"_s, row.protocol}, {u"ftpPort"_s, row.port}});
        EXPECT_EQ(settings->transferProtocol(), row.expectedProtocol);
        EXPECT_EQ(settings->ftpPort(), row.expectedPort);
        EXPECT_EQ(defaults.values.value(u"transferProtocol"_s), rawValue(row.expectedProtocol));
        EXPECT_EQ(defaults.values.value(u"ftpPort"_s), QVariant(row.expectedPort));
    }
}

TEST_F(SettingsStoreTest, ThePortFollowsTheProtocolUnlessItIsTheUsersOwn) {
    const struct {
        TransferProtocol protocol;
        qint64 port;
        qint64 expected;
    } rows[] = {{TransferProtocol::sftp, 21, 22},
                {TransferProtocol::sftp, 2121, 2121},
                {TransferProtocol::ftp, 22, 21},
                {TransferProtocol::ftp, 21, 21}};
    for (const auto& row : rows) {
        settings->setFtpPort(row.port);
        settings->setTransferProtocol(row.protocol);
        EXPECT_EQ(settings->ftpPort(), row.expected);
        EXPECT_EQ(defaults.values.value(u"ftpPort"_s), QVariant(row.expected));
    }
}

TEST_F(SettingsStoreTest, AnotherSportTurnsOffenseAndDefenseOffForGood) {
    settings->setIncludeOffenseDefense(true);
    settings->setSport(Sport::football);
    EXPECT_TRUE(settings->includeOffenseDefense());
    settings->setSport(Sport::soccer);
    EXPECT_FALSE(settings->includeOffenseDefense());
    EXPECT_EQ(defaults.values.value(u"includeOffenseDefense"_s), false);
    settings->setSport(Sport::football);
    EXPECT_FALSE(settings->includeOffenseDefense());
}

TEST_F(SettingsStoreTest, TheLocalSourceClearsTheConnectionStatus) {
    settings->setFtpConnectionStatus(u"Connected"_s);
    settings->setSourceType(SourceType::ftp);
    EXPECT_EQ(settings->ftpConnectionStatus(), u"Connected"_s);
    settings->setSourceType(SourceType::local);
    EXPECT_EQ(settings->ftpConnectionStatus(), std::nullopt);
}

TEST_F(SettingsStoreTest, APathIsStoredInTheNextTurnWithItsFinalValue) {
    const QString first = makeFolder(u"first"_s);
    const QString last = makeFolder(u"last"_s);
    settings->setIngestFolder(first);
    settings->setIngestFolder(last);
    EXPECT_FALSE(defaults.exists(u"ingestFolder"_s));
    nextTurn();
    EXPECT_EQ(references.resolve(defaults.values.value(u"ingestFolder"_s).toByteArray()).path, last);
    settings->setIngestFolder(std::nullopt);
    nextTurn();
    EXPECT_FALSE(defaults.exists(u"ingestFolder"_s));

    settings->setIngestFolder(first);
    settings.reset();
    nextTurn(); // nobody is left to store it
    EXPECT_FALSE(defaults.exists(u"ingestFolder"_s));
}

TEST_F(SettingsStoreTest, APathThatCannotBeReferredToLeavesWhatIsStored) {
    settings->setIngestFolder(makeFolder(u"photos"_s));
    nextTurn();
    const QVariant before = defaults.values.value(u"ingestFolder"_s);
    const QString missing = folder.filePath(u"missing"_s);
    settings->setIngestFolder(missing);
    nextTurn();
    EXPECT_EQ(defaults.values.value(u"ingestFolder"_s), before);
    EXPECT_EQ(log.lines,
              QStringList(u"[SettingsStore] Failed to save bookmark for ingestFolder: There is no file or "
                          "folder at %1."_s.arg(missing)));
}

TEST_F(SettingsStoreTest, AReferenceThatLeadsNowhereIsCleared) {
    const QString path = makeFolder(u"photos"_s);
    const QByteArray reference = references.make(path);
    const std::function<void()> nothing = [] {};
    const std::function<void()> leaves = [&path] { QDir().rmdir(path); };
    const std::function<void()> becomesAFile = [&path] { EXPECT_TRUE(QFile(path).open(QFile::WriteOnly)); };
    const struct {
        QByteArray stored;
        std::function<void()> happening;
        QString line;
    } rows[] = {
        {"garbage", nothing,
         u"[SettingsStore] Failed to load bookmark for %1: The stored file reference is damaged. - clearing"_s},
        {reference, leaves,
         u"[SettingsStore] URL for %1 is no longer accessible: "_s + path + u" - clearing"_s},
        {reference, becomesAFile, u"[SettingsStore] Bookmark for %1 is stale - clearing"_s},
        {R"({"path":"","folder":true})", nothing,
         u"[SettingsStore] URL for %1 is no longer accessible:  - clearing"_s},
    };
    for (const auto& row : rows) {
        row.happening();
        for (const QString& key : {u"ingestFolder"_s, u"codeReplacementsFile"_s, u"destinationFolder"_s}) {
            startOver({{key, row.stored}});
            EXPECT_EQ(log.lines, QStringList(row.line.arg(key)));
            EXPECT_FALSE(defaults.exists(key));
            EXPECT_FALSE(settings->property(key.toLatin1().constData()).value<OptionalText>());
        }
    }
}

/// A file system that answers when it is let, and never the thread of the event loop.
class HangingReferences : public FileReferences {
public:
    QByteArray make(const QString& path) const override {
        wait();
        return m_references.make(path);
    }
    QString pathOf(const QByteArray& reference) const override { return m_references.pathOf(reference); }
    ResolvedFile resolve(const QByteArray& reference) const override {
        wait();
        return m_references.resolve(reference);
    }
    void recover() const { m_semaphore.release(100); }

private:
    void wait() const {
        EXPECT_NE(QThread::currentThread(), QCoreApplication::instance()->thread());
        m_semaphore.acquire();
    }

    PathReferences m_references;
    mutable QSemaphore m_semaphore;
};

TEST_F(SettingsStoreTest, AHangingShareHoldsNoStartUpAndWhatIsGoneIsGivenUpLater) {
    const QString there = makeFolder(u"photos"_s);
    const QString gone = makeFolder(u"gone"_s);
    const QByteArray reference = references.make(there);
    defaults.values = {{u"ingestFolder"_s, references.make(gone)}, {u"destinationFolder"_s, reference}};
    QDir().rmdir(gone);
    const HangingReferences share;
    SettingsStore store(defaults, keychain, share, log, std::chrono::milliseconds(0));
    const QSignalSpy changes(&store, &SettingsStore::ingestFolderChanged);
    EXPECT_EQ(store.ingestFolder(), gone);
    EXPECT_EQ(store.destinationFolder(), there);
    store.setCodeReplacementsFile(there);
    share.recover();
    await(store.pathsSettled());
    waitUntil([&store] { return !store.ingestFolder(); });
    EXPECT_EQ(changes.size(), 1);
    EXPECT_FALSE(defaults.exists(u"ingestFolder"_s));
    EXPECT_EQ(store.destinationFolder(), there);
    EXPECT_EQ(defaults.values.value(u"codeReplacementsFile"_s), reference);
    EXPECT_EQ(
        log.lines,
        QStringList(
            u"[SettingsStore] URL for ingestFolder is no longer accessible: %1 - clearing"_s.arg(gone)));
    nextTurn(); // the keychain's answer
}

TEST_F(SettingsStoreTest, OnlyTheDestinationFoldersReferenceIsRenewedAtAStart) {
    const QString path = makeFolder(u"photos"_s);
    const QByteArray older = references.make(path) + ' '; // the same, with a blank
    startOver(
        {{u"ingestFolder"_s, older}, {u"codeReplacementsFile"_s, older}, {u"destinationFolder"_s, older}});
    EXPECT_EQ(defaults.values.value(u"destinationFolder"_s), references.make(path));
    EXPECT_EQ(defaults.values.value(u"ingestFolder"_s), older);
    EXPECT_EQ(defaults.values.value(u"codeReplacementsFile"_s), older);
}

TEST_F(SettingsStoreTest, APasswordThatComesLateIsTakenAndNotSavedAgain) {
    secrets.secrets.insert(passwordItem, u"stored"_s);
    secrets.begun.clear();
    start();
    EXPECT_EQ(settings->ftpPassword(), QString());
    QString seen; // by one who waits for the keychain
    const auto finished = keychain.finishPending().then([this, &seen] { seen = settings->ftpPassword(); });
    nextTurn();
    EXPECT_EQ(seen, u"stored"_s);
    EXPECT_EQ(secrets.begun, QStringList(u"load"_s));
    start();
    settings.reset();
    nextTurn(); // nobody is left to take it
    EXPECT_EQ(clock.waiting(), 0);
}

TEST_F(SettingsStoreTest, APasswordOfALockedKeyringIsUnknownUntilItIsUnlockedOrTheUserGivesOne) {
    for (const bool isTyped : {false, true}) {
        LockedSecrets locked;
        locked.secrets.insert(passwordItem, u"stored"_s);
        KeychainHelper lockedKeychain(locked, log);
        SettingsStore store(defaults, lockedKeychain, references, log);
        const QSignalSpy known(&store, &SettingsStore::passwordKnown);
        EXPECT_FALSE(store.isPasswordKnown());
        if (isTyped) {
            store.setFtpPassword(u"typed"_s); // is saved at once: the wait is in nobody's way
            EXPECT_FALSE(lockedKeychain.isSaving());
        }
        locked.unlock();
        waitUntil([&store] { return store.isPasswordKnown(); });
        QCoreApplication::processEvents();
        EXPECT_EQ(store.ftpPassword(), isTyped ? u"typed"_s : u"stored"_s);
        EXPECT_EQ(known.size(), 1);
    }
    EXPECT_TRUE(settings->isPasswordKnown()) << "that there is none is known, too";
}

TEST_F(SettingsStoreTest, APasswordThatTheUserHasSetMeanwhileStandsAndIsSaved) {
    for (const QString& password : {u"new"_s, u""_s}) {
        secrets.secrets.insert(passwordItem, u"stored"_s);
        start();
        settings->setFtpPassword(password);
        nextTurn();
        EXPECT_EQ(settings->ftpPassword(), password);
        EXPECT_EQ(secrets.secrets.value(passwordItem), password);
        EXPECT_EQ(secrets.secrets.contains(passwordItem), !password.isEmpty());
    }
}

} // namespace

} // namespace ostrelle
