// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

namespace ostrelle {

/// What a caption request that passed all checks asks.
struct CheckedChat {
    QString model;
    QString system;
    QString prompt;
};

/// Checks the body of a request to the chat completions endpoint as the real service does, and in addition
/// that it has the one layout of a caption request: a system message of one text, then a user message of a
/// text and a JPEG. Throws ApiFault, which names the parameter that is off.
CheckedChat checkChatRequest(const QByteArray& body);

} // namespace ostrelle
