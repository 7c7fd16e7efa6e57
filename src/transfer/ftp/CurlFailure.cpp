// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/ftp/CurlFailure.h"

#include <cerrno>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QString words(const CurlAnswer& answer) {
    constexpr long notAvailable = 421;
    if (answer.result != CURLE_OK && answer.reply == notAvailable) {
        return u"The server closed the connection."_s;
    }
    switch (answer.result) {
    case CURLE_OK:
        return {};
    case CURLE_COULDNT_RESOLVE_HOST:
        return u"There is no server of this name, or the network is down."_s;
    case CURLE_COULDNT_CONNECT:
        return answer.systemError == ECONNREFUSED ? u"The server refuses the connection."_s
                                                  : u"The server cannot be reached."_s;
    case CURLE_OPERATION_TIMEDOUT:
        return u"The server does not answer."_s;
    case CURLE_LOGIN_DENIED:
        return u"The server refuses the user name or the password."_s;
    case CURLE_REMOTE_ACCESS_DENIED:
        return u"The server has no such folder, or does not let this user see it."_s;
    case CURLE_REMOTE_FILE_NOT_FOUND:
        return u"The server has no such file, or does not let this user read it."_s;
    case CURLE_FTP_COULDNT_RETR_FILE:
    case CURLE_FTP_COULDNT_SET_TYPE:
    case CURLE_QUOTE_ERROR:
        return u"The server refuses the transfer."_s;
    case CURLE_FTP_CANT_GET_HOST:
    case CURLE_FTP_WEIRD_PASV_REPLY:
    case CURLE_FTP_WEIRD_227_FORMAT:
    case CURLE_FTP_PORT_FAILED:
    case CURLE_FTP_ACCEPT_FAILED:
        return u"The server offers no connection for its data."_s;
    case CURLE_USE_SSL_FAILED:
        return u"The server offers no encryption."_s;
    case CURLE_SSL_CONNECT_ERROR:
        return u"The encrypted connection could not be set up."_s;
    case CURLE_PARTIAL_FILE:
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
    case CURLE_GOT_NOTHING:
        return u"The connection was lost."_s;
    case CURLE_WEIRD_SERVER_REPLY:
        return u"What answers there is not an FTP server."_s;
    default:
        return u"%1."_s.arg(QString::fromLatin1(curl_easy_strerror(answer.result)));
    }
}

} // namespace

QString curlFailure(const CurlAnswer& answer) {
    constexpr qsizetype longestLine = 200;
    QString refusal = answer.refusal.simplified().left(longestLine);
    refusal.removeIf([](QChar character) { return character.category() == QChar::Other_Control; });
    const QString failure = words(answer);
    return failure.isEmpty() || refusal.isEmpty() ? failure : failure + u" It says: "_s + refusal;
}

} // namespace ostrelle
