// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>
#include <optional>

namespace ostrelle {

/// A request as a server sees it.
struct HttpRequest {
    QByteArray method;
    QByteArray path;
    QList<QPair<QByteArray, QByteArray>> headers; ///< names and values as sent
    QByteArray body;

    /// The first value under the name, whatever its case, or a null array.
    QByteArray header(const QByteArray& name) const;
};

/// Splits the bytes of one connection into HTTP/1.1 requests. Head and body are limited in size.
class HttpRequestReader {
public:
    static constexpr qsizetype largestHead = qsizetype{16} * 1024;
    static constexpr qsizetype largestBody = qsizetype{32} * 1024 * 1024;

    void feed(const QByteArray& bytes) { m_buffer += bytes; }
    /// The next request if it is complete. Throws ApiFault when the rest of the connection makes no sense.
    std::optional<HttpRequest> next();

private:
    void readHead();

    QByteArray m_buffer;
    std::optional<HttpRequest> m_current; ///< whose head has been read
    qsizetype m_bodySize = 0;
};

} // namespace ostrelle
