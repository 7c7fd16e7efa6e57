// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/ImageMetadata.h"

#include "core/Attempt.h"
#include "pipeline/ImageKind.h"
#include "platform/Files.h"
#include "platform/KeptLines.h"

#include <memory>

namespace ostrelle {

namespace {

/// Runs a function that writes log lines on a worker thread; the lines are told however it ends.
template <typename Function>
QCoro::Task<std::invoke_result_t<Function, PlainLog&>> workWithLog(Function function, PlainLog& log) {
    const auto lines = std::make_shared<KeptLines>();
    auto work = [function = std::move(function), lines] { return function(*lines); };
    const auto done = co_await attemptOffMainThread(std::move(work));
    lines->tell(log);
    if (!done) {
        done.rethrow();
    }
    if constexpr (!std::is_void_v<std::invoke_result_t<Function, PlainLog&>>) {
        co_return *done;
    }
}

} // namespace

ImageMetadata::ImageMetadata(QString file, XMPWriter xmp, PlainLog& log)
    : m_file(std::move(file))
    , m_sidecar(sidecarPath(m_file))
    , m_xmp(xmp)
    , m_log(log)
    , m_isEmbedded(isJpegImage(m_file)) {}

QCoro::Task<std::optional<QString>> ImageMetadata::readCaption() const {
    auto read = [xmp = m_xmp, file = m_file, sidecar = m_sidecar, isEmbedded = m_isEmbedded](PlainLog& log) {
        return isEmbedded ? xmp.readEmbeddedCaption(file, log) : xmp.readDefaultCaption(sidecar);
    };
    return workWithLog(std::move(read), m_log);
}

QCoro::Task<XMPContext> ImageMetadata::readContext(QTimeZone zone) const {
    auto read = [xmp = m_xmp, file = m_file, sidecar = m_sidecar, isEmbedded = m_isEmbedded,
                 zone = std::move(zone)](PlainLog& log) {
        return isEmbedded ? xmp.readEmbeddedContext(file, zone, log) : xmp.readContext(sidecar, zone);
    };
    return workWithLog(std::move(read), m_log);
}

QCoro::Task<std::optional<QString>> ImageMetadata::readRights() const {
    auto read = [xmp = m_xmp, file = m_file, sidecar = m_sidecar, isEmbedded = m_isEmbedded](PlainLog& log) {
        return isEmbedded ? xmp.readEmbeddedRights(file) : xmp.readRights(sidecar, log);
    };
    return workWithLog(std::move(read), m_log);
}

QCoro::Task<std::optional<QString>> ImageMetadata::readCreator() const {
    auto read = [xmp = m_xmp, file = m_file, sidecar = m_sidecar, isEmbedded = m_isEmbedded](PlainLog&) {
        return isEmbedded ? xmp.readEmbeddedCreator(file) : xmp.readCreator(sidecar);
    };
    return workWithLog(std::move(read), m_log);
}

QCoro::Task<> ImageMetadata::writeCaption(QString caption, std::optional<FileStamp> decoded) const {
    auto write = [xmp = m_xmp, file = m_file, sidecar = m_sidecar, isEmbedded = m_isEmbedded,
                  caption = std::move(caption), decoded](PlainLog& log) {
        if (isEmbedded) {
            xmp.writeEmbeddedCaption(caption, file, log, decoded);
        } else {
            xmp.writeDefaultCaption(caption, sidecar);
            touchFile(sidecar);
        }
    };
    return workWithLog(std::move(write), m_log);
}

} // namespace ostrelle
