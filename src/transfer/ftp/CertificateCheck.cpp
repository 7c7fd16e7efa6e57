// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/ftp/CertificateCheck.h"

#include <openssl/ssl.h>
#include <openssl/x509.h>
#include <openssl/x509_vfy.h>

#include <QByteArray>
#include <array>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QString fingerprintOf(const X509* certificate) {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int size = 0;
    if (!certificate || X509_digest(certificate, EVP_sha256(), digest.data(), &size) != 1) {
        return {};
    }
    const QByteArray bytes(reinterpret_cast<const char*>(digest.data()), static_cast<qsizetype>(size));
    return QString::fromLatin1(bytes.toHex(':').toUpper());
}

} // namespace

void CertificateCheck::install(CURL* handle) {
    const long hostNameMatches = m_trusted.isEmpty() ? 2 : 0; // a trusted certificate is known by itself
    curl_easy_setopt(handle, CURLOPT_USE_SSL, static_cast<long>(CURLUSESSL_ALL));
    curl_easy_setopt(handle, CURLOPT_FTPSSLAUTH, static_cast<long>(CURLFTPAUTH_TLS));
    curl_easy_setopt(handle, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    curl_easy_setopt(handle, CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(handle, CURLOPT_SSL_VERIFYHOST, hostNameMatches);
    curl_easy_setopt(handle, CURLOPT_SSL_CTX_FUNCTION, &CertificateCheck::prepare);
    curl_easy_setopt(handle, CURLOPT_SSL_CTX_DATA, this);
}

CURLcode CertificateCheck::prepare(CURL*, void* context, void* check) {
    SSL_CTX_set_cert_verify_callback(static_cast<SSL_CTX*>(context), &CertificateCheck::verify, check);
    return CURLE_OK;
}

int CertificateCheck::verify(X509_STORE_CTX* store, void* check) {
    auto& self = *static_cast<CertificateCheck*>(check);
    self.m_fingerprint = fingerprintOf(X509_STORE_CTX_get0_cert(store));
    if (!self.m_trusted.isEmpty()) {
        const bool isTrusted = self.m_fingerprint == self.m_trusted;
        X509_STORE_CTX_set_error(store, isTrusted ? X509_V_OK : X509_V_ERR_CERT_UNTRUSTED);
        return isTrusted ? 1 : 0;
    }
    const int isVerified = X509_verify_cert(store);
    self.m_problem =
        isVerified == 1 ? QString()
                        : QString::fromLatin1(X509_verify_cert_error_string(X509_STORE_CTX_get_error(store)));
    return isVerified;
}

QString CertificateCheck::failure() const {
    if (!m_trusted.isEmpty()) {
        return u"The server's certificate has changed: it is not the one that you have trusted. Its SHA-256 "
               "fingerprint is %1."_s.arg(m_fingerprint);
    }
    if (m_problem.isEmpty()) {
        return u"The server's certificate is for a server of another name. Its SHA-256 fingerprint is %1."_s
            .arg(m_fingerprint);
    }
    return u"The server's certificate cannot be trusted (%1). Its SHA-256 fingerprint is %2."_s.arg(
        m_problem, m_fingerprint);
}

QString normalizedFingerprint(const QString& text) {
    constexpr qsizetype size = 32;
    QByteArray digits = text.toLatin1().toUpper();
    digits.replace(':', "").replace(' ', "");
    const QByteArray bytes = QByteArray::fromHex(digits);
    const bool isWhole = digits.size() == 2 * size && bytes.size() == size;
    return isWhole && bytes.toHex().toUpper() == digits ? QString::fromLatin1(bytes.toHex(':').toUpper())
                                                        : QString();
}

} // namespace ostrelle
