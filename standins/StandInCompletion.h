// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include "standins/ChatRequestCheck.h"

namespace ostrelle {

/// One line that says what the context block of the prompt says: event, venue, place, date, sport, rights
/// and the caption so far; and what the picture is called, if that is given. It ends with the statement that
/// no model has looked at the picture.
QString standInCaption(const QString& prompt, const QString& fileName = {});

/// How the list of a batch's captions looks, or what is wrong with it.
enum class BatchForm {
    list,
    fencedList, ///< in a code block
    listInProse,
    entryMissing,   ///< the last one
    entryTooMany,   ///< the last one twice
    numberDoubled,  ///< the last one has the number of the one before
    numberZero,     ///< the last one's
    numberNegative, ///< the last one's
    numberAbove,    ///< the last one's
    object,         ///< the first entry alone, in no list
};

/// The model's text for a batch: a caption for each image made of its own context, with its file name.
QString standInBatchText(const QList<CheckedImage>& batch, BatchForm form);

/// The reply of the chat completions endpoint for the request, with a stand-in's caption and token
/// counts like those of the real service.
QByteArray standInCompletion(const CheckedChat& chat, qsizetype number, qint64 createdSeconds,
                             BatchForm form = BatchForm::list);

} // namespace ostrelle
