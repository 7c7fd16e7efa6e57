// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "services/BatchCaptions.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

namespace ostrelle {

/// One element of the list that the model was asked for.
struct BatchResponseItem {
    qint64 image = 0; ///< the image's number in the request, from 1, if the model counted right
    QString caption;
};

/// From the first "[" of the model's text to its last "]", without the prose or code fence around it; the
/// whole text when that is not there.
QString jsonListIn(const QString& text);

/// Throws JsonError, with the path of what is off, such as "[1].image".
QList<BatchResponseItem> decodeBatchItems(const QByteArray& json);

/// The captions of the images with these file names, in the order of the items. A number that is no image's
/// is passed over. Throws OpenAIError::decoding unless that leaves as many captions as there are images.
QList<BatchCaptionResult> captionsOfImages(const QList<BatchResponseItem>& items,
                                           const QStringList& fileNames);

} // namespace ostrelle
