// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <curl/curl.h>

#include <QString>

struct x509_store_ctx_st;

namespace ostrelle {

/// Decides during a TLS handshake whether the server's certificate is to be trusted: one that an authority of
/// this computer has signed for the server's name or, where the user has trusted a single one, just that. For
/// libcurl with OpenSSL; must outlive the connection.
class CertificateCheck {
public:
    /// `trusted` is a fingerprint as in fingerprint(), or empty.
    explicit CertificateCheck(QString trusted) : m_trusted(std::move(trusted)) {}

    /// Has the handle require TLS and ask this check.
    void install(CURL* handle);

    /// The SHA-256 fingerprint of the latest certificate: 32 pairs of upper-case hexadecimal digits, with
    /// colons. Empty if there was none.
    const QString& fingerprint() const { return m_fingerprint; }
    /// Why the latest certificate is not trusted, a sentence.
    QString failure() const;

private:
    static CURLcode prepare(CURL* handle, void* context, void* check);
    static int verify(x509_store_ctx_st* store, void* check);

    QString m_trusted;
    QString m_fingerprint;
    QString m_problem; ///< in OpenSSL's words; empty if the authorities vouch for the certificate
};

/// The fingerprint in the form of CertificateCheck::fingerprint(), however it is written; empty if it is
/// none.
QString normalizedFingerprint(const QString& text);

} // namespace ostrelle
