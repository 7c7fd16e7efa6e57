// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

namespace ostrelle {

/// One image of a batch as the model is told about it.
struct CheckedImage {
    QString fileName;
    QString context;
};

/// What a caption request that passed all checks asks.
struct CheckedChat {
    QString model;
    QString system;
    QString prompt;
    QList<CheckedImage> batch; ///< empty when the request is about one image
};

/// Checks the body of a request to the chat completions endpoint as the real service does, and in addition
/// that it has one of the two layouts of a caption request. For one image, that is a system message of one
/// text, then a user message of a text and a JPEG; for a batch, the user message is the prompt, a heading and
/// a JPEG for each image, and the form of the answer. Throws ApiFault, which names the parameter that is off.
CheckedChat checkChatRequest(const QByteArray& body);

} // namespace ostrelle
