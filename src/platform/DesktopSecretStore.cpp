// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DesktopSecretStore.h"

#include <qt6keychain/keychain.h>

#include <QByteArray>
#include <QCoroSignal>
#include <memory>

namespace ostrelle {

namespace {

struct DeleteLater {
    // The owner resumes in the midst of the job's own signal or event, which is too early to pull it away.
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

/// The job must live until this ends.
QCoro::Task<> run(QKeychain::Job* job) {
    job->start(); // which only queues it: it cannot be finished before it is awaited
    co_await qCoro(job, &QKeychain::Job::finished);
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

} // namespace ostrelle
