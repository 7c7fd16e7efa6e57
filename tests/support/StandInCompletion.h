// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/ChatRequestCheck.h"

#include <QByteArray>
#include <QString>

namespace ostrelle {

/// One line that says what the context block of the prompt says: event, venue, place, date, sport, rights
/// and the caption so far. It ends with the statement that no model has looked at the picture.
QString standInCaption(const QString& prompt);

/// The reply of the chat completions endpoint for the request, with a stand-in's caption and token
/// counts like those of the real service.
QByteArray standInCompletion(const CheckedChat& chat, qsizetype number, qint64 createdSeconds);

} // namespace ostrelle
