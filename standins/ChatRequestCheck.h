// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

namespace ostrelle {

/// One image of a batch as described to the model.
struct CheckedImage {
    QString fileName;
    QString context;
};

/// The contents of a caption request that passed all checks.
struct CheckedChat {
    QString model;
    QString system;
    QString prompt;
    QList<CheckedImage> batch; ///< empty when the request is about one image
};

/// Checks the body of a request to the chat completions endpoint as the real service does, and also that it
/// has one of the two layouts of a caption request. For one image: a system message of one text, then a user
/// message of a text and a JPEG. For a batch: a user message of the prompt, a heading and a JPEG for each
/// image, and the form of the answer. Throws ApiFault, which names the invalid parameter.
CheckedChat checkChatRequest(const QByteArray& body);

} // namespace ostrelle
