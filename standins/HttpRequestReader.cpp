// SPDX-License-Identifier: GPL-3.0-or-later
#include "standins/HttpRequestReader.h"

#include "standins/ApiFault.h"

#include <algorithm>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

HttpRequest parseHead(const QByteArray& head) {
    QList<QByteArray> lines = head.split('\n');
    const QList<QByteArray> words = lines.takeFirst().trimmed().split(' ');
    if (words.size() != 3 || words[2] != "HTTP/1.1") {
        throw ApiFault(400, u"Bad request line."_s);
    }
    HttpRequest request{.method = words[0], .path = words[1], .headers = {}, .body = {}};
    for (const QByteArray& line : lines) {
        const qsizetype colon = line.indexOf(": ");
        if (colon < 1 || line.left(colon).contains(' ')) {
            throw ApiFault(400, u"Bad header."_s);
        }
        request.headers.append({line.left(colon), line.mid(colon + 2).chopped(1)});
    }
    return request;
}

qsizetype bodySize(const HttpRequest& request) {
    if (request.method == "GET" && request.header("Content-Length").isEmpty()) {
        return 0;
    }
    bool isNumber = false;
    const qlonglong size = request.header("Content-Length").toLongLong(&isNumber);
    if (!isNumber || size < 0) {
        throw ApiFault(411, u"A length is required."_s);
    }
    if (size > HttpRequestReader::largestBody) {
        throw ApiFault(413, u"The request is too large."_s);
    }
    return size;
}

} // namespace

QByteArray HttpRequest::header(const QByteArray& name) const {
    const auto found = std::find_if(headers.begin(), headers.end(), [&name](const auto& header) {
        return header.first.compare(name, Qt::CaseInsensitive) == 0;
    });
    return found == headers.end() ? QByteArray() : found->second;
}

std::optional<HttpRequest> HttpRequestReader::next() {
    if (!m_current) {
        readHead();
    }
    if (!m_current || m_buffer.size() < m_bodySize) {
        return std::nullopt;
    }
    HttpRequest request = std::move(*m_current);
    m_current.reset();
    request.body = m_buffer.left(m_bodySize);
    m_buffer.remove(0, m_bodySize);
    return request;
}

void HttpRequestReader::readHead() {
    const QByteArray blankLine = "\r\n\r\n";
    const qsizetype end = m_buffer.indexOf(blankLine);
    if (end > largestHead || (end < 0 && m_buffer.size() > largestHead)) {
        throw ApiFault(431, u"The request's headers are too large."_s);
    }
    if (end >= 0) {
        HttpRequest request = parseHead(m_buffer.left(end + 2).chopped(1));
        m_bodySize = bodySize(request);
        m_buffer.remove(0, end + blankLine.size());
        m_current = std::move(request);
    }
}

} // namespace ostrelle
