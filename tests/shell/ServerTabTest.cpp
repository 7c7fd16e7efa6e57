// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/SettingsViewFixture.h"
#include "shell/toolkit/StatusMark.h"

#include <QLineEdit>
#include <QSignalSpy>
#include <functional>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

class ServerTabTest : public SettingsViewTest {
protected:
    /// The connection status as shown; nothing if there is none.
    std::optional<std::pair<StatusTone, QString>> status() {
        const auto* mark = find<StatusMark>(u"ftpConnectionStatus"_s);
        return mark->isVisible() ? std::optional(std::pair(mark->tone(), mark->text())) : std::nullopt;
    }
    /// Shows the window with a connection test that runs until endTest() gives it a result.
    void showWithTest() {
        world.parts.connectionTest = [this]() -> QCoro::Task<ConnectionResult> {
            ++begun;
            while (!result) {
                co_await world.clock.sleep(std::chrono::seconds(1));
            }
            co_return result();
        };
        show(std::make_unique<SettingsView>(world.parts));
        showTab(1);
    }
    void enterServer() {
        world.settings.setFtpHost(u"ftp.gameday.example"_s);
        world.settings.setFtpUsername(u"sideline"_s);
        world.settings.setFtpPassword(u"secret"_s);
    }
    void endTest(std::function<ConnectionResult()> ending) {
        result = std::move(ending);
        world.clock.advance(std::chrono::seconds(1));
    }

    int begun = 0;
    std::function<ConnectionResult()> result;
};

} // namespace

TEST_F(ServerTabTest, FieldsAndSettingsOfTheServerFollowEachOther) {
    showTab(1);
    SettingsStore& settings = world.settings;
    enterServer(); // late, like the keychain's answer
    EXPECT_EQ(find<QLineEdit>(u"ftpPassword"_s)->text(), u"secret"_s);
    EXPECT_EQ(find<QLineEdit>(u"ftpPassword"_s)->echoMode(), QLineEdit::Password);
    for (const QString& name : {u"ftpHost"_s, u"ftpUsername"_s, u"ftpPath"_s}) {
        find<QLineEdit>(name)->clear();
        QTest::keyClicks(find(name), u"typed"_s);
        EXPECT_EQ(settings.property(name.toUtf8()).toString(), u"typed"_s) << name.toStdString();
    }
}

TEST_F(ServerTabTest, ThePasswordIsSavedOnceWhenItsFieldIsLeft) {
    const std::function<void()> ways[] = {
        [this] { QTest::keyClick(find(u"ftpPassword"_s), Qt::Key_Return); },
        [this] { find(u"ftpHost"_s)->setFocus(); },
        [this] { view->close(); },
        [this] { view->hide(); }, // as when the program ends
        [this] { find<QAbstractButton>(u"testConnection"_s)->click(); },
    };
    for (const auto& leave : ways) {
        const QSignalSpy changes(&world.settings, &SettingsStore::ftpPasswordChanged);
        world.settings.setFtpPassword(u"old"_s);
        view->show();
        showTab(1);
        auto* field = find<QLineEdit>(u"ftpPassword"_s);
        field->setFocus();
        field->selectAll();
        QTest::keyClicks(field, u"new secret"_s);
        EXPECT_EQ(world.settings.ftpPassword(), u"old"_s);
        leave();
        EXPECT_EQ(world.settings.ftpPassword(), u"new secret"_s);
        EXPECT_EQ(changes.size(), 2);
    }
}

TEST_F(ServerTabTest, AKeyringThatAnswersLateLeavesWhatIsBeingTyped) {
    showTab(1);
    auto* field = find<QLineEdit>(u"ftpPassword"_s);
    QTest::keyClicks(field, u"typed"_s);
    world.settings.setFtpPassword(u"of the keyring"_s);
    EXPECT_EQ(field->text(), u"typed"_s);
    find<QAbstractButton>(u"clearFtpSettings"_s)->click();
    EXPECT_EQ(field->text() + world.settings.ftpPassword(), QString());
}

TEST_F(ServerTabTest, OnlyAPortIsTakenForAPort) {
    showTab(1);
    const struct {
        QString typed;
        qint64 stored;
    } rows[] = {{u"2121"_s, 2121}, {u"0"_s, 21}, {u""_s, 21}, {u"21a"_s, 21}, {u"65536"_s, 6553}};
    auto* port = find<QLineEdit>(u"ftpPort"_s);
    for (const auto& row : rows) {
        world.settings.setFtpPort(21);
        port->setFocus();
        port->selectAll();
        QTest::keyClick(port, Qt::Key_Delete);
        QTest::keyClicks(port, row.typed);
        EXPECT_EQ(world.settings.ftpPort(), row.stored) << row.typed.toStdString();
        QTest::keyClick(port, Qt::Key_Return);
        EXPECT_EQ(port->text(), QString::number(row.stored)) << row.typed.toStdString();
    }
    world.settings.setFtpPort(99999); // not typed into the field
    EXPECT_EQ(port->text(), u"99999"_s);
}

TEST_F(ServerTabTest, AConnectionTestTellsHowItWent) {
    showWithTest();
    for (const auto clear :
         {&SettingsStore::setFtpHost, &SettingsStore::setFtpUsername, &SettingsStore::setFtpPassword}) {
        enterServer();
        (world.settings.*clear)({});
        click(u"testConnection"_s);
        EXPECT_EQ(status(), std::pair(StatusTone::destroying, u"Please fill in all required fields"_s));
    }
    EXPECT_EQ(begun, 0);
    enterServer();
    const struct {
        std::function<ConnectionResult()> result;
        StatusTone tone;
        QString words;
    } rows[] = {
        {[] { return ConnectionResult{.isGood = true}; }, StatusTone::good, u"Connection successful"_s},
        {[] { return ConnectionResult{.reason = u"It is closed."_s}; }, StatusTone::destroying,
         u"Connection failed\nIt is closed."_s},
        {[]() -> ConnectionResult { throw std::runtime_error("refused"); }, StatusTone::destroying,
         u"Connection failed\nrefused"_s},
    };
    auto* button = find<QAbstractButton>(u"testConnection"_s);
    for (const auto& row : rows) {
        result = nullptr;
        button->click();
        button->click(); // while it runs
        EXPECT_FALSE(world.settings.ftpConnectionStatus()) << "the result of the last test is gone";
        endTest(row.result);
        await(view->finished());
        EXPECT_EQ(status(), std::pair(row.tone, row.words));
    }
    EXPECT_EQ(begun, std::ssize(rows));
    EXPECT_EQ(world.console.lines.last(), u"[SettingsView] A connection test failed: refused"_s);
}

TEST_F(ServerTabTest, AConnectionTestOffersEncryptionAndAsksWhomToTrust) {
    SettingsStore& settings = world.settings;
    world.parts.connectionTest = [&settings]() -> QCoro::Task<ConnectionResult> {
        const bool isOpen = !settings.isFtpEncryptionChosen();
        const bool isPlain = !isOpen && settings.ftpEncryption() == FtpEncryption::none;
        const bool isGood = isPlain || settings.ftpTrustedCertificate() == u"AB:CD";
        co_return ConnectionResult{.isGood = isGood,
                                   .reason = isGood ? QString() : u"It has signed itself."_s,
                                   .untrustedCertificate = isGood ? QString() : u"AB:CD"_s,
                                   .isEncrypted = !isPlain};
    };
    show(std::make_unique<SettingsView>(world.parts));
    showTab(1);
    enterServer();
    const auto test = [this](int answer) {
        world.alerts.answer = answer;
        const qsizetype before = world.alerts.shown.size();
        click(u"testConnection"_s);
        await(view->finished());
        return world.alerts.shown.size() - before;
    };
    EXPECT_EQ(test(0), 2) << "Encrypt, then Cancel";
    EXPECT_EQ(settings.ftpEncryption(), FtpEncryption::explicitTls);
    EXPECT_EQ(status(), std::pair(StatusTone::destroying, u"Connection failed\nIt has signed itself."_s));
    EXPECT_EQ(test(1), 1) << "Trust This Certificate";
    EXPECT_EQ(status(), std::pair(StatusTone::good, u"Connection successful"_s));
    EXPECT_EQ(settings.ftpTrustedCertificate(), u"AB:CD"_s);
    settings.setFtpHost(u"another.example"_s);
    EXPECT_EQ(settings.ftpTrustedCertificate(), QString()) << "it was the other server's";
    click(u"clearFtpSettings"_s);
    enterServer();
    EXPECT_EQ(test(1), 1) << "Don't Encrypt";
    EXPECT_EQ(test(0), 0) << "nobody is asked twice";
    EXPECT_EQ(settings.ftpEncryption(), FtpEncryption::none);
}

TEST_F(ServerTabTest, AWindowThatGoesLeavesItsTestToEndUnheard) {
    showWithTest();
    enterServer();
    find<QAbstractButton>(u"testConnection"_s)->click();
    QCoro::Task<> finished = view->finished();
    show(std::make_unique<SettingsView>(world.parts));
    endTest([] { return ConnectionResult{.isGood = true}; });
    await(std::move(finished));
    EXPECT_FALSE(world.settings.ftpConnectionStatus());
}

TEST_F(ServerTabTest, APasswordThatTheKeyringDoesNotKeepIsSaidToGo) {
    showTab(1);
    auto* field = find<QLineEdit>(u"ftpPassword"_s);
    const auto type = [&](int status) {
        world.secrets.status = status;
        field->setFocus();
        QTest::keyClicks(field, u"x"_s);
        QTest::keyClick(field, Qt::Key_Return);
        await(world.program.keychain.finishPending());
        return isShown(u"passwordNotKept"_s);
    };
    EXPECT_FALSE(isShown(u"passwordNotKept"_s));
    EXPECT_TRUE(type(1));
    EXPECT_EQ(world.settings.ftpPassword(), field->text()) << "until the program ends";
    EXPECT_FALSE(type(0));
}

TEST_F(ServerTabTest, ClearingTheServerKeepsTheProtocolAndDropsARunningTest) {
    showWithTest();
    SettingsStore& settings = world.settings;
    settings.setTransferProtocol(TransferProtocol::sftp);
    enterServer();
    settings.setFtpPath(u"/cam1"_s);
    settings.setFtpPort(2222);
    find<QAbstractButton>(u"testConnection"_s)->click();
    find<QAbstractButton>(u"clearFtpSettings"_s)->click();
    endTest([] { return ConnectionResult{.isGood = true}; });
    await(view->finished());
    EXPECT_FALSE(status()) << "the tested server is no longer set";
    EXPECT_EQ(settings.transferProtocol(), TransferProtocol::sftp);
    EXPECT_EQ(settings.ftpHost() + settings.ftpUsername() + settings.ftpPassword(), QString());
    EXPECT_EQ(settings.ftpPath(), u"/"_s);
    EXPECT_EQ(find<QLineEdit>(u"ftpPort"_s)->text(), u"21"_s);
    settings.setTransferProtocol(TransferProtocol::ftp);
    EXPECT_EQ(settings.ftpPort(), 21);
}

} // namespace ostrelle
