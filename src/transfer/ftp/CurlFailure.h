// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <curl/curl.h>

#include <QString>

namespace ostrelle {

/// What a failed transfer means to the user, as a sentence; empty for CURLE_OK. `reply` is the code of the
/// server's last reply, such as 530, or 0.
QString curlFailure(CURLcode result, long reply);

} // namespace ostrelle
