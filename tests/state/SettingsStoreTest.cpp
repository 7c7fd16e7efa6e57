// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/SettingsStore.h"

#include "platform/PathReferences.h"
#include "state/SlowSecrets.h"
#include "support/MemoryDefaults.h"
#include "support/RecordingLog.h"
#include "support/VirtualClock.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QMetaMethod>
#include <QMetaProperty>
#include <QTemporaryDir>
#include <functional>
#include <memory>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

class ChangeCounter : public QObject {
    Q_OBJECT

public:
    Q_INVOKABLE void count() { ++changes; }

    int changes = 0;
};

const QString passwordItem = u"com.tobinvasquel.OstrelleCaptions/FTPPassword"_s;

class SettingsStoreTest : public testing::Test {
protected:
    SettingsStoreTest() { start(); }

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
    }
    static void nextTurn() { QCoreApplication::sendPostedEvents(); }

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

TEST_F(SettingsStoreTest, TheFirstStartWritesThreeDefaults) {
    nextTurn();
    EXPECT_EQ(defaults.values, (QMap<QString, QVariant>{{u"alwaysOverwriteCaptions"_s, true},
                                                        {u"appendCreditToCaption"_s, true},
                                                        {u"ftpPort"_s, qint64(21)}}));
    EXPECT_TRUE(secrets.secrets.isEmpty());
    EXPECT_EQ(log.lines, QStringList());
}

TEST_F(SettingsStoreTest, DefaultsOfEachField) {
    const QMap<QByteArray, QVariant> expected = {
        {"ingestFolder", QVariant::fromValue(std::optional<QString>())},
        {"codeReplacementsFile", QVariant::fromValue(std::optional<QString>())},
        {"hasAPIKey", false},
        {"captionStyle", QVariant::fromValue(CaptionStyle::apSports)},
        {"fallbackBehavior", QVariant::fromValue(FallbackBehavior::attemptCaption)},
        {"sport", QVariant::fromValue(Sport::football)},
        {"autoMode", false},
        {"useTeamIdentification", false},
        {"team1Name", u""_s},
        {"team1Color", u"Blue"_s},
        {"team2Name", u""_s},
        {"team2Color", u"White"_s},
        {"includeOffenseDefense", false},
        {"prioritizeAudioFiles", false},
        {"alwaysOverwriteCaptions", true},
        {"appendCreditToCaption", true},
        {"launchWithPhotoMechanic", false},
        {"defaultRightsFallback", u""_s},
        {"sourceType", QVariant::fromValue(SourceType::local)},
        {"transferProtocol", QVariant::fromValue(TransferProtocol::ftp)},
        {"ftpHost", u""_s},
        {"ftpUsername", u""_s},
        {"ftpPassword", u""_s},
        {"ftpPath", u"/"_s},
        {"ftpPort", qint64(21)},
        {"destinationFolder", QVariant::fromValue(std::optional<QString>())},
        {"ftpConnectionStatus", QVariant::fromValue(std::optional<QString>())},
    };
    const QMetaObject& type = SettingsStore::staticMetaObject;
    EXPECT_EQ(type.propertyCount() - type.propertyOffset(), expected.size());
    for (auto field = expected.begin(); field != expected.end(); ++field) {
        EXPECT_EQ(settings->property(field.key().constData()), field.value()) << field.key().constData();
    }
}

// Each field: what it is set to, how it is stored (nothing: not at all), and that its signal tells of it
// once.
TEST_F(SettingsStoreTest, EachFieldIsStoredUnderItsNameAndSurvivesARestart) {
    struct Row {
        const char* field;
        QVariant value;
        QVariant stored;
    };
    const QString path = makeFolder(u"field"_s);
    const auto folderValue = QVariant::fromValue(std::optional<QString>(path));
    const QVariant reference = references.make(path);
    const std::vector<Row> rows = {
        {"ingestFolder", folderValue, reference},
        {"codeReplacementsFile", folderValue, reference},
        {"destinationFolder", folderValue, reference},
        {"fallbackBehavior", QVariant::fromValue(FallbackBehavior::omitCaption), u"omitCaption"_s},
        {"sport", QVariant::fromValue(Sport::horseRacing), u"horseRacing"_s},
        {"autoMode", true, true},
        {"useTeamIdentification", true, true},
        {"team1Name", u"Lions"_s, u"Lions"_s},
        {"team1Color", u""_s, u""_s}, // an empty text is a value
        {"team2Name", u"Bears"_s, u"Bears"_s},
        {"team2Color", u"Navy"_s, u"Navy"_s},
        {"includeOffenseDefense", true, true},
        {"prioritizeAudioFiles", true, true},
        {"alwaysOverwriteCaptions", false, false},
        {"appendCreditToCaption", false, false},
        {"launchWithPhotoMechanic", true, true},
        {"defaultRightsFallback", u"\u00a9 2024"_s, u"\u00a9 2024"_s},
        {"sourceType", QVariant::fromValue(SourceType::ftp), u"ftp"_s},
        {"transferProtocol", QVariant::fromValue(TransferProtocol::sftp), u"sftp"_s},
        {"ftpHost", u"ftp.example.com"_s, u"ftp.example.com"_s},
        {"ftpUsername", u"desk"_s, u"desk"_s},
        {"ftpPath", u"/in"_s, u"/in"_s},
        {"ftpPort", qint64(-1), qint64(-1)},
        {"ftpPort", qint64(70'000), qint64(70'000)},
        {"ftpPassword", u"secret"_s, QVariant()},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.field);
        startOver({});
        ChangeCounter counter;
        const QMetaObject& type = SettingsStore::staticMetaObject;
        QObject::connect(
            settings.get(), type.property(type.indexOfProperty(row.field)).notifySignal(), &counter,
            ChangeCounter::staticMetaObject.method(ChangeCounter::staticMetaObject.indexOfMethod("count()")));
        settings->setProperty(row.field, row.value);
        settings->setProperty(row.field, row.value);
        EXPECT_EQ(counter.changes, 1);
        EXPECT_EQ(settings->property(row.field), row.value);
        nextTurn();
        EXPECT_EQ(defaults.values.value(QString::fromLatin1(row.field)), row.stored);
        start();
        EXPECT_EQ(settings->property(row.field), row.value);
        EXPECT_EQ(log.lines, QStringList());
    }
}

TEST_F(SettingsStoreTest, FieldsOfThisRunOnlyAreNotStored) {
    nextTurn();
    const QMap<QString, QVariant> before = defaults.values;
    settings->setCaptionStyle(CaptionStyle::gettySports);
    settings->setHasAPIKey(true);
    settings->setFtpConnectionStatus(u"Connected"_s);
    nextTurn();
    EXPECT_EQ(defaults.values, before);
    start();
    EXPECT_EQ(settings->captionStyle(), CaptionStyle::apSports);
    EXPECT_FALSE(settings->hasAPIKey());
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
        {u"sport"_s, u"cricket"_s},
        {u"captionStyle"_s, u"APSPORTS"_s},
        {u"fallbackBehavior"_s, true},
        {u"sourceType"_s, u"cloud"_s},
        {u"transferProtocol"_s, u""_s},
        {u"ftpPort"_s, qint64(21)},
        {u"alwaysOverwriteCaptions"_s, false},
        {u"appendCreditToCaption"_s, false},
    };
    startOver(stored);
    EXPECT_EQ(settings->sport(), Sport::football);
    EXPECT_EQ(settings->captionStyle(), CaptionStyle::apSports);
    EXPECT_EQ(settings->fallbackBehavior(), FallbackBehavior::attemptCaption);
    EXPECT_EQ(settings->sourceType(), SourceType::local);
    EXPECT_EQ(settings->transferProtocol(), TransferProtocol::ftp);
    nextTurn();
    EXPECT_EQ(defaults.values, stored);
    EXPECT_EQ(log.lines, QStringList());
}

TEST_F(SettingsStoreTest, ProtocolAndPortAfterAStart) {
    struct Row {
        const char* source;
        const char* protocol;
        QVariant port;
        TransferProtocol expectedProtocol;
        qint64 expectedPort;
    };
    const std::vector<Row> rows = {
        {"local", "sftp", qint64(22), TransferProtocol::sftp, 22},
        {"ftp", "sftp", qint64(22), TransferProtocol::ftp, 21},
        {"ftp", "sftp", qint64(2222), TransferProtocol::ftp, 2222},
        {"ftp", "sftp", QVariant(), TransferProtocol::ftp, 21},
        {"local", "sftp", QVariant(), TransferProtocol::sftp, 22},
        {"local", "sftp", u"2222"_s, TransferProtocol::sftp, 22}, // no integer
        {"local", "sftp", qint64(21), TransferProtocol::sftp, 21},
        {"ftp", "ftp", 2222.0, TransferProtocol::ftp, 21},
        {"ftp", "ftp", qint64(22), TransferProtocol::ftp, 22}, // as it was: no protocol has changed
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message()
                     << row.source << ' ' << row.protocol << ' ' << row.port.toString().toStdString());
        QMap<QString, QVariant> stored = {{u"sourceType"_s, QString::fromLatin1(row.source)},
                                          {u"transferProtocol"_s, QString::fromLatin1(row.protocol)}};
        if (row.port.isValid()) {
            stored.insert(u"ftpPort"_s, row.port);
        }
        startOver(stored);
        EXPECT_EQ(settings->transferProtocol(), row.expectedProtocol);
        EXPECT_EQ(settings->ftpPort(), row.expectedPort);
        EXPECT_EQ(defaults.values.value(u"transferProtocol"_s), rawValue(row.expectedProtocol));
        EXPECT_EQ(defaults.values.value(u"ftpPort"_s), QVariant(row.expectedPort));
    }
}

TEST_F(SettingsStoreTest, ThePortFollowsTheProtocolUnlessItIsTheUsersOwn) {
    struct Row {
        TransferProtocol protocol;
        qint64 port;
        qint64 expected;
    };
    for (const Row& row : {Row{TransferProtocol::sftp, 21, 22}, Row{TransferProtocol::sftp, 2121, 2121},
                           Row{TransferProtocol::ftp, 22, 21}, Row{TransferProtocol::ftp, 0, 0},
                           Row{TransferProtocol::ftp, 21, 21}, Row{TransferProtocol::sftp, 22, 22}}) {
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
    struct Row {
        QByteArray stored;
        std::function<void()> happening;
        QString line;
    };
    const std::vector<Row> rows = {
        {"garbage", nothing,
         u"[SettingsStore] Failed to load bookmark for %1: The stored file reference is damaged. - clearing"_s},
        {reference, [&path] { QDir().rmdir(path); },
         u"[SettingsStore] URL for %1 is no longer accessible: "_s + path + u" - clearing"_s},
        {reference,
         [&path] {
             QFile file(path);
             EXPECT_TRUE(file.open(QIODevice::WriteOnly));
         },
         u"[SettingsStore] Bookmark for %1 is stale - clearing"_s},
        {R"({"path":"","folder":true})", nothing,
         u"[SettingsStore] URL for %1 is no longer accessible:  - clearing"_s},
    };
    for (const Row& row : rows) {
        row.happening();
        for (const QString& key : {u"ingestFolder"_s, u"codeReplacementsFile"_s, u"destinationFolder"_s}) {
            startOver({{key, row.stored}});
            nextTurn();
            EXPECT_EQ(log.lines, QStringList(row.line.arg(key)));
            EXPECT_FALSE(defaults.exists(key));
            EXPECT_FALSE(settings->property(key.toLatin1().constData()).value<std::optional<QString>>());
        }
    }
}

TEST_F(SettingsStoreTest, OnlyTheDestinationFoldersReferenceIsRenewedAtAStart) {
    const QString path = makeFolder(u"photos"_s);
    const QByteArray older =
        R"({ "path": ")" + path.toUtf8() + R"(", "folder": true })"; // the same, with blanks
    startOver(
        {{u"ingestFolder"_s, older}, {u"codeReplacementsFile"_s, older}, {u"destinationFolder"_s, older}});
    nextTurn();
    EXPECT_EQ(settings->destinationFolder(), path);
    EXPECT_EQ(defaults.values.value(u"destinationFolder"_s), references.make(path));
    EXPECT_EQ(defaults.values.value(u"ingestFolder"_s), older);
    EXPECT_EQ(defaults.values.value(u"codeReplacementsFile"_s), older);
}

TEST_F(SettingsStoreTest, ThePasswordIsInTheKeychainOnly) {
    settings->setFtpPassword(u"secret"_s);
    EXPECT_EQ(secrets.secrets.value(passwordItem), u"secret"_s);
    EXPECT_FALSE(defaults.exists(u"ftpPassword"_s));
    start();
    EXPECT_EQ(settings->ftpPassword(), u"secret"_s); // as the store has answered at once
    settings->setFtpPassword(u""_s);
    EXPECT_TRUE(secrets.secrets.isEmpty());
}

TEST_F(SettingsStoreTest, APasswordThatCannotBeSavedStaysForThisRun) {
    secrets.status = 7;
    settings->setFtpPassword(u"secret"_s);
    EXPECT_EQ(settings->ftpPassword(), u"secret"_s);
    EXPECT_EQ(log.lines, QStringList(u"[KeychainHelper] Failed to save password: 7"_s));
}

class SlowKeychainTest : public testing::Test {
protected:
    SlowKeychainTest() { secrets.secrets.insert(passwordItem, u"stored"_s); }

    VirtualClock clock;
    MemoryDefaults defaults;
    SlowSecrets secrets{clock};
    RecordingLog log;
    PathReferences references;
    KeychainHelper keychain{secrets, log};
    std::unique_ptr<SettingsStore> settings =
        std::make_unique<SettingsStore>(defaults, keychain, references, log);
    ChangeCounter counter;
};

TEST_F(SlowKeychainTest, APasswordThatComesLaterIsTakenAndNotSavedAgain) {
    QObject::connect(settings.get(), &SettingsStore::ftpPasswordChanged, &counter, &ChangeCounter::count);
    EXPECT_EQ(settings->ftpPassword(), QString());
    secrets.end();
    EXPECT_EQ(settings->ftpPassword(), u"stored"_s);
    EXPECT_EQ(counter.changes, 1);
    EXPECT_EQ(secrets.begun, QStringList(u"load"_s));
}

TEST_F(SlowKeychainTest, WhatTheUserHasSetMeanwhileStands) {
    for (const QString& password : {u"new"_s, u""_s}) {
        settings = std::make_unique<SettingsStore>(defaults, keychain, references, log);
        settings->setFtpPassword(password);
        secrets.end();
        EXPECT_EQ(settings->ftpPassword(), password);
        EXPECT_EQ(secrets.secrets.value(passwordItem), password);
    }
}

TEST_F(SlowKeychainTest, APasswordThatComesTooLateIsDropped) {
    settings.reset();
    secrets.end();
    EXPECT_EQ(clock.waiting(), 0);
}

TEST_F(SlowKeychainTest, OnceTheKeychainIsIdleThePasswordIsThere) {
    QString seen;
    auto finished = keychain.finishPending().then([this, &seen] { seen = settings->ftpPassword(); });
    secrets.end();
    EXPECT_EQ(seen, u"stored"_s);
}

} // namespace

} // namespace ostrelle

#include "SettingsStoreTest.moc"
