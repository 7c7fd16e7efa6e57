// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "standins/ChatRequestCheck.h"

#include <QByteArray>
#include <QString>

namespace ostrelle {

/// A one-line caption that repeats the prompt's context block: event, venue, place, date, sport, rights and
/// the caption so far, and the file name, if given. It ends with the statement that no model has looked at
/// the picture.
QString standInCaption(const QString& prompt, const QString& fileName = {});

/// The form of a batch's list of captions, or its defect.
enum class BatchForm {
    list,
    fencedList, ///< in a code block
    listInProse,
    entryMissing,   ///< the last one
    entryTooMany,   ///< the last one twice
    numberZero,     ///< the last one's
    numberNegative, ///< the last one's
    numberAbove,    ///< the last one's
};

/// The model's text for a batch: for each image, a caption from its own context, with its file name.
QString standInBatchText(const QList<CheckedImage>& batch, BatchForm form);

/// The chat completions endpoint's reply to the request, with a stand-in's caption and token counts like
/// those of the real service.
QByteArray standInCompletion(const CheckedChat& chat, qsizetype number, qint64 createdSeconds,
                             BatchForm form = BatchForm::list);

} // namespace ostrelle
