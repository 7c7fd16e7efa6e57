// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DesktopSecretStore.h"

#include "platform/PrivateSession.h"

#include <qt6keychain/keychain.h>

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusVariant>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString service = u"com.example.OstrelleTest"_s;
const QString account = u"FTPPassword"_s;

class DesktopSecretStoreTest : public PrivateSessionTest {
protected:
    int save(const QString& secret) { return await(store.save(service, account, secret)); }
    std::optional<QString> load() { return await(store.load(service, account)); }
    int remove() { return await(store.remove(service, account)); }

    DesktopSecretStore store;
};

class WithKeyring : public DesktopSecretStoreTest {
protected:
    static QVariantList call(const QString& interface, const QString& method, const QVariantList& arguments) {
        return answerOf(QDBusMessage::createMethodCall(u"org.freedesktop.secrets"_s,
                                                       u"/org/freedesktop/secrets"_s, interface, method),
                        arguments);
    }
    void lockKeyring() {
        call(secretService, u"Lock"_s, {QVariant::fromValue(QList<QDBusObjectPath>{keyring})});
    }
    /// Unlocks it with the password set by with-keyring, as a login does: nobody could answer a prompt.
    void unlockKeyring() {
        const QVariantList session =
            call(secretService, u"OpenSession"_s, {u"plain"_s, QVariant::fromValue(QDBusVariant(QString()))});
        QDBusArgument password;
        password.beginStructure();
        password << session.value(1).value<QDBusObjectPath>() << QByteArray("") << QByteArray("password\n")
                 << u"text/plain"_s;
        password.endStructure();
        call(u"org.gnome.keyring.InternalUnsupportedGuiltRiddenInterface"_s, u"UnlockWithMasterPassword"_s,
             {QVariant::fromValue(keyring), QVariant::fromValue(password)});
    }

    const QString secretService = u"org.freedesktop.Secret.Service"_s;
    const QDBusObjectPath keyring{u"/org/freedesktop/secrets/collection/login"_s};
};
class WithoutService : public DesktopSecretStoreTest {};

TEST_F(WithKeyring, KeepsTheLastPasswordOfEachAccountUntilItIsRemoved) {
    EXPECT_EQ(load(), std::nullopt);
    for (const QString& secret : {u"p\u00e4ss \U0001F511"_s, u" blanks around "_s, u"two\nlines"_s,
                                  u"%1 %s \\ \""_s, QString(10'000, u'x')}) {
        EXPECT_EQ(save(secret), 0);
        EXPECT_EQ(load(), secret);
    }
    EXPECT_EQ(await(store.load(service, u"Other"_s)), std::nullopt);
    EXPECT_EQ(await(store.remove(u"com.example.Other"_s, account)), 0);
    EXPECT_NE(load(), std::nullopt);
    EXPECT_EQ(remove(), 0);
    EXPECT_EQ(load(), std::nullopt); // only one item was stored
    EXPECT_EQ(remove(), 0);          // a missing one is not an error
}

TEST_F(WithKeyring, WhatIsNoTextIsNoPassword) {
    QKeychain::WritePasswordJob job(service);
    job.setAutoDelete(false);
    job.setKey(account);
    job.setBinaryData("\xff\xfe\x01");
    bool isWritten = false;
    QObject::connect(&job, &QKeychain::Job::finished, &job, [&isWritten] { isWritten = true; });
    job.start();
    waitUntil([&isWritten] { return isWritten; });
    EXPECT_EQ(job.error(), QKeychain::NoError);
    EXPECT_EQ(load(), std::nullopt);
    remove();
}

TEST_F(WithKeyring, ALockedPasswordIsToldFromAMissingOneAndWaitedFor) {
    EXPECT_FALSE(await(store.unlocked(service, account))) << "no password is stored";
    save(u"secret"_s);
    EXPECT_FALSE(await(store.unlocked(service, account))) << "the password is not locked";
    lockKeyring();
    EXPECT_EQ(load(), std::nullopt);
    EXPECT_FALSE(await(store.unlocked(service, u"Other"_s)));
    QCoro::Task<bool> unlocked = store.unlocked(service, account);
    waitUntil([rounds = 0]() mutable { return ++rounds > 10; }); // it has seen the lock, and waits
    EXPECT_FALSE(unlocked.isReady());
    unlockKeyring();
    EXPECT_TRUE(await(std::move(unlocked)));
    EXPECT_EQ(load(), u"secret"_s);
    remove();
}

TEST_F(WithKeyring, ADroppedOperationGoesOn) {
    {
        const auto dropped = store.save(service, account, u"secret"_s);
    }
    waitUntil([this] { return load() == u"secret"_s; });
    remove();
}

TEST_F(WithoutService, NothingIsStoredAndWritersAreTold) {
    EXPECT_EQ(save(u"secret"_s), QKeychain::OtherError);
    EXPECT_EQ(load(), std::nullopt);
    EXPECT_EQ(remove(), QKeychain::OtherError);
    EXPECT_FALSE(await(store.unlocked(service, account)));
}

} // namespace

} // namespace ostrelle
