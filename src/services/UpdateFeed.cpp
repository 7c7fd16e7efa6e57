// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/UpdateFeed.h"

#include "core/Error.h"
#include "core/Iso8601.h"

#include <openssl/evp.h>

#include <QJsonDocument>
#include <memory>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

struct FreeOpenSsl {
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};

const unsigned char* bytesOf(const QByteArray& array) {
    return reinterpret_cast<const unsigned char*>(array.constData());
}

bool isSigned(const QByteArray& message, const QByteArray& signature, const QByteArray& publicKey) {
    const std::unique_ptr<EVP_PKEY, FreeOpenSsl> key(EVP_PKEY_new_raw_public_key(
        EVP_PKEY_ED25519, nullptr, bytesOf(publicKey), static_cast<std::size_t>(publicKey.size())));
    const std::unique_ptr<EVP_MD_CTX, FreeOpenSsl> context(EVP_MD_CTX_new());
    return key && context && EVP_DigestVerifyInit(context.get(), nullptr, nullptr, nullptr, key.get()) == 1 &&
           EVP_DigestVerify(context.get(), bytesOf(signature), static_cast<std::size_t>(signature.size()),
                            bytesOf(message), static_cast<std::size_t>(message.size())) == 1;
}

} // namespace

UpdateFeed UpdateFeed::read(const QByteArray& bytes, const QByteArray& publicKey) {
    if (bytes.size() > largest) {
        throw Error(u"The list of versions is larger than 1 MB."_s);
    }
    const qsizetype end = bytes.indexOf('\n');
    const auto signature =
        QByteArray::fromBase64Encoding(bytes.left(end).trimmed(), QByteArray::AbortOnBase64DecodingErrors);
    const QByteArray message = bytes.mid(end + 1);
    if (end < 0 || !signature || !isSigned(message, *signature, publicKey)) {
        throw Error(u"The list of versions is not signed by its makers."_s);
    }
    const QJsonDocument json = QJsonDocument::fromJson(message);
    const std::optional<QDateTime> published = parseIso8601(json[u"published"].toString());
    const UpdateFeed feed{.version = QVersionNumber::fromString(json[u"version"].toString()),
                          .published = published.value_or(QDateTime()),
                          .notes = json[u"notes"].toString()};
    if (feed.version.isNull() || !feed.published.isValid()) {
        throw Error(u"The list of versions cannot be read."_s);
    }
    return feed;
}

} // namespace ostrelle
