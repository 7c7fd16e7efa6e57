// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DesktopSecretStore.h"

#include "platform/BusConnection.h"
#include "platform/KeyringChanges.h"

#include <qt6keychain/keychain.h>

#include <QByteArray>
#include <QCoroDBusPendingCall>
#include <QCoroFuture>
#include <QCoroSignal>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QMap>
#include <chrono>
#include <memory>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::seconds busPatience(2);

struct DeleteLater {
    // The owner resumes inside the job's own signal or event, where deleting the job would be too early.
    void operator()(QObject* object) const { object->deleteLater(); }
};

template <typename Job>
using JobPointer = std::unique_ptr<Job, DeleteLater>;

template <typename Job>
JobPointer<Job> makeJob(const QString& service, const QString& account) {
    JobPointer<Job> job(new Job(service));
    job->setAutoDelete(false);
    job->setInsecureFallback(false);
    job->setKey(account);
    return job;
}

/// The job must outlive this task.
QCoro::Task<> run(QKeychain::Job* job) {
    job->start(); // only queues it, so it cannot finish before it is awaited
    co_await qCoro(job, &QKeychain::Job::finished);
}

/// A search with the attributes that a job of makeJob() uses. Unlike a job, it never prompts the user.
QDBusMessage search(const QString& service, const QString& account) {
    QDBusMessage message =
        QDBusMessage::createMethodCall(KeyringChanges::service, u"/org/freedesktop/secrets"_s,
                                       u"org.freedesktop.Secret.Service"_s, u"SearchItems"_s);
    QDBusArgument attributes;
    attributes.beginMap(QMetaType::fromType<QString>(), QMetaType::fromType<QString>());
    for (const auto& [name, value] : {std::pair(u"user"_s, account), std::pair(u"server"_s, service)}) {
        attributes.beginMapEntry();
        attributes << name << value;
        attributes.endMapEntry();
    }
    attributes.endMap();
    message.setArguments({QVariant::fromValue(attributes)});
    return message;
}

/// The answer holds two lists: the unlocked items and the locked ones.
bool isOnlyLocked(const QDBusMessage& answer) {
    const QVariantList lists = answer.arguments();
    return answer.type() == QDBusMessage::ReplyMessage && lists.size() == 2 &&
           qdbus_cast<QList<QDBusObjectPath>>(lists[0]).isEmpty() &&
           !qdbus_cast<QList<QDBusObjectPath>>(lists[1]).isEmpty();
}

} // namespace

QCoro::Task<int> DesktopSecretStore::save(QString service, QString account, QString secret) {
    const auto job = makeJob<QKeychain::WritePasswordJob>(service, account);
    job->setTextData(secret);
    co_await run(job.get());
    co_return static_cast<int>(job->error());
}

QCoro::Task<std::optional<QString>> DesktopSecretStore::load(QString service, QString account) {
    const auto job = makeJob<QKeychain::ReadPasswordJob>(service, account);
    co_await run(job.get());
    const QByteArray secret = job->binaryData();
    const bool isText = job->error() == QKeychain::NoError && secret.isValidUtf8();
    co_return isText ? std::optional(QString::fromUtf8(secret)) : std::nullopt;
}

QCoro::Task<int> DesktopSecretStore::remove(QString service, QString account) {
    const auto job = makeJob<QKeychain::DeletePasswordJob>(service, account);
    co_await run(job.get());
    co_return static_cast<int>(job->error());
}

QCoro::Task<bool> DesktopSecretStore::unlocked(QString service, QString account) {
    std::optional<QDBusConnection> bus = co_await sessionBus(busPatience);
    if (!bus) {
        co_return false;
    }
    const QDBusMessage question = search(service, account);
    KeyringChanges changes(*bus); // before the first look, so that no change is missed
    bool wasLocked = false;
    for (;;) {
        const Event change = changes.next();
        QDBusPendingCall asked = bus->asyncCall(question);
        const QDBusMessage answer = co_await asked;
        if (!isOnlyLocked(answer)) {
            co_return wasLocked;
        }
        wasLocked = true;
        co_await change.happened();
    }
}

} // namespace ostrelle
