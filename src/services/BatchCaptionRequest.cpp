// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/BatchCaptionRequest.h"

#include "services/WireText.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// A name of several lines would read as the heading of another image.
TextBlock imageHeading(qsizetype number, const BatchImageItem& image) {
    return {u"\n\n--- IMAGE "_s + QString::number(number) + u": "_s + onOneLine(image.filename) +
            u" ---\n"_s + image.context};
}

TextBlock formOfAnswer() {
    return {u"\nReturn a JSON array with one caption per image. Format:\n"
            "[\n"
            "  {\"image\": 1, \"caption\": \"first caption here\"},\n"
            "  {\"image\": 2, \"caption\": \"second caption here\"},\n"
            "  ...\n"
            "]\n"
            "Each caption should be exactly one line as specified in the instructions above."_s};
}

} // namespace

QList<ChatMessage> batchCaptionMessages(const QList<BatchImageItem>& images, const QString& prompt) {
    QList<ContentBlock> content{TextBlock{prompt}};
    for (qsizetype position = 0; position < images.size(); ++position) {
        content.append(imageHeading(position + 1, images[position]));
        content.append(ImageBlock{.jpeg = images[position].imageJPEGData, .detail = u"low"_s});
    }
    content.append(formOfAnswer());
    const TextBlock task{u"You are a sports caption writer. Return captions in the requested JSON format."_s};
    return {{.role = u"system"_s, .content = {task}}, {.role = u"user"_s, .content = content}};
}

} // namespace ostrelle
