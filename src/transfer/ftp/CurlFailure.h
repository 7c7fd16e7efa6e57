// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <curl/curl.h>

#include <QString>

namespace ostrelle {

/// How a transfer ended.
struct CurlAnswer {
    CURLcode result = CURLE_OK;
    long reply = 0;       ///< the server's last one, a number
    long systemError = 0; ///< an errno, if the connection failed
    QString refusal = {}; ///< the server's last words of refusal
};

/// Why a transfer failed, for the user, with the server's own words where it has refused something. Empty if
/// it succeeded.
QString curlFailure(const CurlAnswer& answer);

} // namespace ostrelle
