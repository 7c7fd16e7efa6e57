// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/PromptQuery.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTcpSocket>
#include <QUrl>
#include <QUrlQuery>

namespace ostrelle {

using namespace Qt::StringLiterals;

struct Answer {
    int status = 0;
    QByteArray type;
    QByteArray body;

    QJsonObject json() const { return QJsonDocument::fromJson(body).object(); }
};

/// Sends the bytes to the server and reads its answer to the end.
inline Answer ask(const QUrl& url, const QByteArray& request) {
    constexpr int longestWait = 30'000; // far longer than it takes
    QTcpSocket socket;
    socket.connectToHost(url.host(), static_cast<quint16>(url.port()));
    socket.write(request);
    QByteArray reply;
    while (socket.waitForReadyRead(longestWait)) {
        reply += socket.readAll();
    }
    const qsizetype headEnd = reply.indexOf("\r\n\r\n");
    const QString head = QString::fromLatin1(reply.first(std::max<qsizetype>(headEnd, 0)));
    static const QRegularExpression type(u"Content-Type: (.*)"_s);
    return {.status = head.section(u' ', 1, 1).toInt(),
            .type = type.match(head).captured(1).trimmed().toLatin1(),
            .body = reply.sliced(headEnd + 4)};
}

inline QByteArray keyHeader(const QByteArray& key) {
    return "X-API-Key: " + key + "\r\n";
}

inline QByteArray get(const QByteArray& path, const QByteArray& headers = {}) {
    return "GET " + path + " HTTP/1.1\r\nHost: x\r\n" + headers + "\r\n";
}

inline QByteArray target(const PromptQuery& query = {}) {
    QUrlQuery items;
    items.setQueryItems(queryItems(query));
    return "/api/prompt?" + items.toString().toLatin1();
}

} // namespace ostrelle
