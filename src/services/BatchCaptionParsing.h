// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "services/BatchCaptions.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

namespace ostrelle {

/// One element of the list requested from the model.
struct BatchResponseItem {
    qint64 image = 0; ///< the image's number in the request, from 1, if the model counted correctly
    QString caption;
};

/// The model's text from its first "[" to its last "]", without surrounding prose or code fences; the whole
/// text when it has none.
QString jsonListIn(const QString& text);

/// Throws JsonError with the path of the invalid part, such as "[1].image".
QList<BatchResponseItem> decodeBatchItems(const QByteArray& json);

/// The captions of the images with these file names, in the order of the items. Skips numbers of no image.
/// Throws OpenAIError::decoding unless as many captions remain as there are images.
QList<BatchCaptionResult> captionsOfImages(const QList<BatchResponseItem>& items,
                                           const QStringList& fileNames);

} // namespace ostrelle
