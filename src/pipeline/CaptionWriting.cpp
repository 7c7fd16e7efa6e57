// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/CaptionWriting.h"

#include "metadata/ImageMetadata.h"
#include "pipeline/FolderWork.h"

namespace ostrelle {

QCoro::Task<std::optional<FileStamp>> writeCaption(AnalyzerParts parts, PreparedImage image,
                                                   QString caption) {
    auto write = [image, caption](PlainLog& log) {
        return ImageMetadata(image.file).writeCaption(caption, image.source, log);
    };
    co_return co_await onThreadOf(parts.threads, image.file, parts.log.console(), write);
}

} // namespace ostrelle
