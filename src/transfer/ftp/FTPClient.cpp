// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/ftp/FTPClient.h"

#include "core/Attempt.h"
#include "core/OffMainThread.h"
#include "platform/KeptLines.h"
#include "platform/PrintInTurns.h"
#include "transfer/ftp/FTPError.h"
#include "transfer/ftp/FTPListing.h"
#include "transfer/ftp/FtpDownload.h"
#include "transfer/ftp/StabilityWait.h"
#include "transfer/ftp/StreamReader.h"

#include <QByteArray>
#include <memory>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

FTPClient::FTPClient(FtpAccount account, FtpParts parts)
    : m_account(std::move(account)), m_parts(std::move(parts)) {}

QCoro::Task<QList<FTPFileInfo>> FTPClient::listFiles() {
    const FtpAddress address = addressOf(folder());
    StreamReader reader(m_parts, address);
    co_return co_await list(&reader, address.password);
}

QCoro::Task<QList<FTPFileInfo>> FTPClient::list(StreamReader* given, QString password) {
    constexpr int mostPasses = 1000;
    StreamReader& reader = *given;
    print(u"Listing files from path: "_s + folder());
    reader.create();
    print(u"Constructed URL: "_s + reader.shownAddress());
    print(u"Stream created, opening connection..."_s);
    co_await reader.open();
    print(u"Connection established, reading data..."_s);
    QByteArray bytes;
    StreamReader::Pass pass = StreamReader::Pass::nothing;
    while (pass != StreamReader::Pass::end && reader.spentPasses() < mostPasses) {
        pass = co_await reader.pass();
        bytes += reader.bytes();
    }
    print(u"Finished reading, total data size: %1 bytes"_s.arg(bytes.size()));
    const bool isWhole = pass == StreamReader::Pass::end && reader.failure().isEmpty();
    m_listingProblem = isWhole           ? QString()
                       : bytes.isEmpty() ? u"The server does not answer."_s
                                         : u"The listing of the server's folder was cut short, so files may "
                                           "be missing."_s;
    if (bytes.isEmpty() && !reader.failure().isEmpty()) {
        throw FTPError(FTPError::Case::cannotOpenStream, reader.failure());
    }
    if (bytes.isEmpty()) {
        print(u"Directory listing is empty - directory contains no files"_s);
        m_parts.status.setFtpStatusMessage(u"Directory is empty"_s);
        co_return QList<FTPFileInfo>();
    }
    const auto lines = std::make_shared<KeptLines>();
    auto parse = [bytes, password, lines] { return parseListing(bytes, password, *lines); };
    const auto entries = co_await attemptOffMainThread(parse);
    co_await printInTurns(m_parts.log, lines->lines());
    if (!entries) {
        entries.rethrow();
    }
    co_return *entries;
}

QCoro::Task<Download> FTPClient::downloadFile(QString name, DownloadTarget target,
                                              DownloadProgress progress) {
    FtpDownload download(m_parts, addressOf(folder() + name), target, progress);
    co_return co_await download.execute();
}

QCoro::Task<ConnectionResult> FTPClient::testConnection() {
    FtpAddress address = addressOf(folder());
    FtpServerFacts facts;
    if (m_account.isEncryptionOpen) { // the password must not be sent before TLS has been tried
        address.security.encryption = FtpEncryption::explicitTls;
        const ConnectionResult encrypted = co_await tryToList(address, &facts);
        if (encrypted.isEncrypted || !facts.isAnswering) {
            co_return encrypted;
        }
        address.security.encryption = m_account.security.encryption;
    }
    co_return co_await tryToList(address, &facts);
}

QCoro::Task<ConnectionResult> FTPClient::tryToList(FtpAddress address, FtpServerFacts* facts) {
    StreamReader reader(m_parts, address);
    const auto listing = co_await attempt(list(&reader, address.password));
    *facts = reader.facts();
    if (listing) {
        co_return ConnectionResult{.isGood = m_listingProblem.isEmpty(),
                                   .reason = m_listingProblem,
                                   .isEncrypted = facts->isEncrypted};
    }
    print(u"Connection test failed: "_s + listing.words());
    const auto error = listing.failureAs<FTPError>();
    const bool hasReason = error && !error->reason().isEmpty();
    co_return ConnectionResult{.reason = hasReason ? error->reason() : listing.words(),
                               .untrustedCertificate = facts->untrustedCertificate,
                               .isEncrypted = facts->isEncrypted};
}

QCoro::Task<qint64> FTPClient::fileSize(QString name) {
    const QList<FTPFileInfo> listing = co_await listFiles();
    co_return sizeInListing(listing, name);
}

QCoro::Task<Stability> FTPClient::waitForFileStable(QString name, std::chrono::milliseconds checkInterval,
                                                    std::chrono::milliseconds timeout) {
    StabilityWait wait(*this, m_parts.clock, m_parts.log, u"FTPClient"_s);
    co_return co_await wait.waitForFile(name, checkInterval, timeout);
}

QCoro::Task<bool> FTPClient::waitForBatchStable(QStringList names, std::chrono::milliseconds checkInterval,
                                                std::chrono::milliseconds timeout) {
    StabilityWait wait(*this, m_parts.clock, m_parts.log, u"FTPClient"_s);
    co_return co_await wait.waitForBatch(names, checkInterval, timeout);
}

QString FTPClient::folder() const {
    const QString path = m_account.path.isEmpty() ? u"/"_s : m_account.path;
    return path.endsWith(u'/') ? path : path + u'/';
}

FtpAddress FTPClient::addressOf(const QString& path) const {
    return {.host = m_account.host,
            .port = m_account.port,
            .path = path,
            .username = m_account.username,
            .password = m_account.passwordProvider(),
            .security = m_account.security};
}

void FTPClient::print(const QString& words) {
    m_parts.log.print(u"[FTPClient] "_s + words);
}

} // namespace ostrelle
