// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/SettingsStore.h"

#include "platform/PathReferences.h"
#include "standins/MemoryDefaults.h"
#include "standins/MemorySecrets.h"
#include "support/Await.h"
#include "support/RecordingLog.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QMetaProperty>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QThread>
#include <memory>
#include <tuple>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

using OptionalText = std::optional<QString>;
using Stored = QMap<QString, QVariant>;

QList<QMetaProperty> allSettings() {
    const QMetaObject& type = SettingsStore::staticMetaObject;
    QList<QMetaProperty> result;
    for (int index = type.propertyOffset(); index < type.propertyCount(); ++index) {
        result.append(type.property(index));
    }
    return result;
}

/// A setting's default, another value that it can have, and how that one is stored.
struct Example {
    QVariant first, other, stored;
};

template <typename T>
Example example(const T& first, const T& other, const QVariant& stored) {
    return {QVariant::fromValue(first), QVariant::fromValue(other), stored};
}

/// The other value of a path is the folder, stored as the reference.
Example exampleOf(const QMetaProperty& setting, const QString& folder, const QVariant& reference) {
    const QVariant nothing; // no stored value
    const QString name = QString::fromLatin1(setting.name());
    const Example path = example<OptionalText>({}, folder, reference);
    const QMap<QString, Example> special = {
        {u"ingestFolder"_s, path},
        {u"codeReplacementsFile"_s, path},
        {u"destinationFolder"_s, path},
        {u"hasAPIKey"_s, {false, true, nothing}},
        {u"captionStyle"_s, example(CaptionStyle::apSports, CaptionStyle::gettySports, nothing)},
        {u"fallbackBehavior"_s,
         example(FallbackBehavior::attemptCaption, FallbackBehavior::omitCaption, u"omitCaption"_s)},
        {u"sport"_s, example(Sport::football, Sport::horseRacing, u"horseRacing"_s)},
        {u"team1Color"_s, {u"Blue"_s, u""_s, u""_s}}, // an empty text is a value
        {u"team2Color"_s, {u"White"_s, u"Red"_s, u"Red"_s}},
        {u"alwaysOverwriteCaptions"_s, {true, false, false}},
        {u"appendCreditToCaption"_s, {true, false, false}},
        {u"sourceType"_s, example(SourceType::local, SourceType::ftp, u"ftp"_s)},
        {u"transferProtocol"_s, example(TransferProtocol::ftp, TransferProtocol::sftp, u"sftp"_s)},
        {u"ftpPassword"_s, {u""_s, u"secret"_s, nothing}},
        {u"ftpEncryption"_s, example(FtpEncryption::none, FtpEncryption::explicitTls, u"explicitTLS"_s)},
        {u"ftpPath"_s, {u"/"_s, u"/in"_s, u"/in"_s}},
        {u"ftpPort"_s, {qint64(21), qint64(70'000), qint64(70'000)}},
        {u"ftpConnectionStatus"_s, example<OptionalText>({}, u"Connected"_s, nothing)},
    };
    const bool isSwitch = setting.typeId() == QMetaType::Bool;
    return special.value(name, isSwitch ? Example{false, true, true} : Example{QString(), name, name});
}

class SettingsStoreTest : public testing::Test {
protected:
    SettingsStoreTest() { startOver({}); }

    /// Restarts the program with what is stored.
    void restart() {
        settings.reset();
        settings = std::make_unique<SettingsStore>(defaults, keychain, references, log);
        settle();
    }
    void startOver(const Stored& stored) {
        defaults.values = stored;
        log.lines.clear();
        restart();
    }
    void settle() { await(settings->pathsSettled()); }

    QString makeFolder(const QString& name) const {
        QDir(folder.path()).mkdir(name);
        return folder.filePath(name);
    }

    QTemporaryDir folder;
    MemoryDefaults defaults;
    MemorySecrets secrets;
    RecordingLog log;
    PathReferences references;
    KeychainHelper keychain{secrets, log};
    std::unique_ptr<SettingsStore> settings;
};

TEST_F(SettingsStoreTest, WhereNothingUsableIsStoredThereAreDefaults) {
    const Stored atFirst = {
        {u"alwaysOverwriteCaptions"_s, true}, {u"appendCreditToCaption"_s, true}, {u"ftpPort"_s, qint64(21)}};
    Stored unknown = {{u"sport"_s, u"cricket"_s},
                      {u"captionStyle"_s, u"APSPORTS"_s},
                      {u"fallbackBehavior"_s, true},
                      {u"sourceType"_s, u"cloud"_s},
                      {u"transferProtocol"_s, u""_s}};
    unknown.insert(atFirst);
    for (const auto& [stored, storedThen] : {std::pair(Stored(), atFirst), std::pair(unknown, unknown)}) {
        startOver(stored);
        for (const QMetaProperty& setting : allSettings()) {
            EXPECT_EQ(setting.read(settings.get()), exampleOf(setting, {}, {}).first) << setting.name();
        }
        EXPECT_EQ(defaults.values, storedThen);
        EXPECT_TRUE(secrets.secrets.isEmpty());
        EXPECT_EQ(log.lines, QStringList());
    }
}

TEST_F(SettingsStoreTest, EachSettingAnnouncesAChangeOnceIsStoredUnderItsNameAndSurvivesARestart) {
    const QString path = makeFolder(u"folder"_s);
    const QStringList ofThisRunOnly = {u"captionStyle"_s, u"hasAPIKey"_s, u"ftpConnectionStatus"_s};
    for (const QMetaProperty& setting : allSettings()) {
        SCOPED_TRACE(setting.name());
        const QString name = QString::fromLatin1(setting.name());
        const auto [first, other, stored] = exampleOf(setting, path, references.make(path));
        startOver({});
        const QSignalSpy changes(settings.get(), setting.notifySignal());
        setting.write(settings.get(), other);
        setting.write(settings.get(), other);
        EXPECT_EQ(changes.size(), 1);
        EXPECT_EQ(setting.read(settings.get()), other);
        settle();
        EXPECT_EQ(defaults.values.value(name), stored);
        restart();
        EXPECT_EQ(setting.read(settings.get()), ofThisRunOnly.contains(name) ? first : other);
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

TEST_F(SettingsStoreTest, ProtocolAndPortAfterAStart) {
    const struct {
        QString source, protocol;
        QVariant port;
        TransferProtocol expectedProtocol;
        qint64 expectedPort;
    } rows[] = {
        {u"local"_s, u"sftp"_s, qint64(21), TransferProtocol::sftp, 21},
        {u"local"_s, u"sftp"_s, QVariant(), TransferProtocol::sftp, 22},
        {u"local"_s, u"sftp"_s, u"2222"_s, TransferProtocol::sftp, 22}, // not an integer
        {u"ftp"_s, u"sftp"_s, qint64(22), TransferProtocol::ftp, 21},
        {u"ftp"_s, u"sftp"_s, qint64(2222), TransferProtocol::ftp, 2222},
        {u"ftp"_s, u"sftp"_s, QVariant(), TransferProtocol::ftp, 21},
        {u"ftp"_s, u"ftp"_s, qint64(22), TransferProtocol::ftp, 22}, // unchanged, like the protocol
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
    using enum TransferProtocol;
    const std::tuple<TransferProtocol, qint64, qint64> rows[] = {
        {sftp, 21, 22}, {sftp, 2121, 2121}, {ftp, 22, 21}, {ftp, 21, 21}};
    for (const auto& [protocol, port, expected] : rows) {
        settings->setFtpPort(port);
        settings->setTransferProtocol(protocol);
        EXPECT_EQ(settings->ftpPort(), expected);
        EXPECT_EQ(defaults.values.value(u"ftpPort"_s), QVariant(expected));
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
    settle();
    EXPECT_EQ(references.resolve(defaults.values.value(u"ingestFolder"_s).toByteArray()).path, last);
    settings->setIngestFolder(std::nullopt);
    settle();
    EXPECT_FALSE(defaults.exists(u"ingestFolder"_s));

    settings->setIngestFolder(first);
    settings.reset();
    QCoreApplication::processEvents(); // nobody is left to store it
    EXPECT_FALSE(defaults.exists(u"ingestFolder"_s));
}

TEST_F(SettingsStoreTest, APathThatCannotBeReferredToLeavesWhatIsStored) {
    settings->setIngestFolder(makeFolder(u"photos"_s));
    settle();
    const QVariant before = defaults.values.value(u"ingestFolder"_s);
    const QString missing = folder.filePath(u"missing"_s);
    settings->setIngestFolder(missing);
    settle();
    EXPECT_EQ(defaults.values.value(u"ingestFolder"_s), before);
    EXPECT_EQ(log.lines,
              QStringList(u"[SettingsStore] Failed to save bookmark for ingestFolder: There is no file or "
                          "folder at %1."_s.arg(missing)));
}

TEST_F(SettingsStoreTest, AReferenceThatLeadsNowhereIsCleared) {
    const auto expectCleared = [this](const QByteArray& reference, const QString& why) {
        for (const QString& key : {u"ingestFolder"_s, u"codeReplacementsFile"_s, u"destinationFolder"_s}) {
            startOver({{key, reference}});
            EXPECT_EQ(log.lines, QStringList(u"[SettingsStore] %1 - clearing"_s.arg(why.arg(key))));
            EXPECT_FALSE(defaults.exists(key));
            EXPECT_FALSE(settings->property(key.toLatin1().constData()).value<OptionalText>());
        }
    };
    const QString path = makeFolder(u"photos"_s);
    const QByteArray reference = references.make(path);
    expectCleared("garbage", u"Failed to load bookmark for %1: The stored file reference is damaged."_s);
    expectCleared(R"({"path":"","folder":true})", u"URL for %1 is no longer accessible: "_s);
    ASSERT_TRUE(QDir().rmdir(path));
    expectCleared(reference, u"URL for %1 is no longer accessible: "_s + path);
    ASSERT_TRUE(QFile(path).open(QFile::WriteOnly));
    expectCleared(reference, u"Bookmark for %1 is stale"_s);
}

/// A file system that answers only once it recovers, and must not be asked on the event loop's thread.
class HangingReferences : public PathReferences {
public:
    QByteArray make(const QString& path) const override {
        wait();
        return PathReferences::make(path);
    }
    ResolvedFile resolve(const QByteArray& reference) const override {
        wait();
        return PathReferences::resolve(reference);
    }
    void recover() const { m_semaphore.release(100); }

private:
    void wait() const {
        EXPECT_NE(QThread::currentThread(), QCoreApplication::instance()->thread());
        m_semaphore.acquire();
    }

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
}

TEST_F(SettingsStoreTest, OnlyTheDestinationFoldersReferenceIsRenewedAtAStart) {
    const QString path = makeFolder(u"photos"_s);
    const QByteArray older = references.make(path) + ' '; // the same, with a space
    startOver(
        {{u"ingestFolder"_s, older}, {u"codeReplacementsFile"_s, older}, {u"destinationFolder"_s, older}});
    EXPECT_EQ(defaults.values.value(u"destinationFolder"_s), references.make(path));
    EXPECT_EQ(defaults.values.value(u"ingestFolder"_s), older);
    EXPECT_EQ(defaults.values.value(u"codeReplacementsFile"_s), older);
}

} // namespace

} // namespace ostrelle
