// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/ImageGathering.h"

#include "core/Attempt.h"
#include "pipeline/AudioNote.h"
#include "pipeline/CaptionAcceptance.h"
#include "pipeline/SidecarCreation.h"
#include "platform/FileError.h"

#include <QFile>
#include <QFileInfo>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// Stands for a caption that is not there, in the prompt and in comparisons.
const QString noCaption = u"No caption"_s;

bool isPermissionFailure(const auto& attempt) {
    const auto error = attempt.template failureAs<FileError>();
    return error && error->isPermissionDenied();
}

} // namespace

ImageGathering::ImageGathering(AnalyzerParts parts, QString file)
    : m_parts(parts), m_name(QFileInfo(file).fileName()), m_metadata(file, parts.xmp, parts.log.console()) {
    m_image.file = std::move(file);
    m_image.defaultCaption = noCaption;
}

QCoro::Task<> ImageGathering::ensureSidecar() {
    if (m_metadata.isEmbedded()) {
        co_return;
    }
    const auto created = co_await attempt(createSidecar(m_parts, m_image.file));
    if (created) {
        co_return;
    }
    m_parts.log.printAndAppend(
        u"[Analyzer] Failed to create XMP sidecar for RAW file %1 in folder: %2. Error: %3. This may be a "
        "permissions issue. Try selecting both the RAW and XMP files, or move the file to a different folder "
        "with write permissions."_s.arg(m_name, QFileInfo(m_image.file).path(), created.words()));
    created.rethrow();
}

QCoro::Task<> ImageGathering::readCaption() {
    const auto caption = co_await attempt(m_metadata.readCaption());
    if (caption) {
        m_caption = *caption ? std::optional((*caption)->trimmed()) : std::nullopt;
        m_image.defaultCaption = m_caption.value_or(noCaption);
        co_return;
    }
    if (m_metadata.isEmbedded() || !isPermissionFailure(caption)) {
        m_parts.log.printAndAppend(
            u"[Analyzer] Could not read metadata for %1: %2"_s.arg(m_name, caption.words()));
        caption.rethrow();
    }
    m_parts.log.print(
        u"[Analyzer] Permission error reading default caption from XMP for %1, attempting to recreate "
        "sidecar..."_s.arg(m_name));
    co_await recreateSidecar();
    m_parts.log.print(u"[Analyzer] Recreated unreadable XMP sidecar for "_s + m_name);
}

bool ImageGathering::isFinished() {
    if (m_parts.settings.alwaysOverwriteCaptions() || !isRealCaption(m_caption.value_or(QString()))) {
        return false;
    }
    m_parts.log.printAndAppend(
        u"[Analyzer] %1 already has caption, skipping (overwrite disabled)"_s.arg(m_name));
    return true;
}

/// A sidecar that nobody may read is of no use to anybody: a new one takes its place, without a caption.
QCoro::Task<> ImageGathering::recreateSidecar() {
    const ScopedAccess fileAccess(m_parts.access, m_metadata.sidecar());
    const ScopedAccess folderAccess(m_parts.access, QFileInfo(m_metadata.sidecar()).path());
    auto recreate = [xmp = m_parts.xmp, sidecar = m_metadata.sidecar()] {
        // Not removed but put aside, if that can be: its owner may still want to know what is in it.
        if (!QFile::rename(sidecar, sidecar + u".unreadable"_s)) {
            QFile::remove(sidecar);
        }
        xmp.createEmptySidecar(sidecar);
    };
    const auto recreated = co_await attemptOffMainThread(recreate);
    if (!recreated) {
        m_parts.log.printAndAppend(
            u"[Analyzer] Could not read metadata for %1: %2"_s.arg(m_name, recreated.words()));
        recreated.rethrow();
    }
}

QCoro::Task<> ImageGathering::readContext() {
    const auto context = co_await attempt(m_metadata.readContext(m_parts.clock.timeZone()));
    if (!context) {
        m_parts.log.printAndAppend(
            u"[Analyzer] Could not read context for %1: %2"_s.arg(m_name, context.words()));
        context.rethrow();
    }
    m_image.context = *context;
}

QCoro::Task<> ImageGathering::readContextOrRecreate() {
    const auto context = co_await attempt(m_metadata.readContext(m_parts.clock.timeZone()));
    if (context) {
        m_image.context = *context;
        co_return;
    }
    if (!m_metadata.isEmbedded() && isPermissionFailure(context)) {
        m_parts.log.print(
            u"[Analyzer] Permission error reading XMP for %1, attempting to recreate..."_s.arg(m_name));
        co_await recreateSidecar();
        m_parts.log.print(u"[Analyzer] Recreated XMP sidecar for "_s + m_name);
    }
    co_await readContext();
}

QCoro::Task<> ImageGathering::readRightsAndCreator() {
    const auto rights = co_await attempt(m_metadata.readRights());
    const auto creator = co_await attempt(m_metadata.readCreator());
    m_image.rights = rights.valueOr(std::nullopt);
    m_creator = creator.valueOr(std::nullopt);
}

QCoro::Task<> ImageGathering::extractPreview() {
    constexpr double longestSide = 1024; // pixels
    constexpr double jpegQuality = 0.6;
    constexpr double rawQuality = 0.85;
    const double quality = m_metadata.isEmbedded() ? jpegQuality : rawQuality;
    auto extract = [previewer = m_parts.previewer, file = m_image.file, quality] {
        const std::optional<FileStamp> stamp = FileStamp::at(file); // of what is read, or of what was before
        return std::pair(previewer.extractPreview(file, longestSide, quality), stamp);
    };
    const auto jpeg = co_await attemptOffMainThread(extract);
    if (!jpeg) {
        m_parts.log.printAndAppend(
            u"[Analyzer] Failed to extract preview for %1: %2"_s.arg(m_name, jpeg.words()));
        jpeg.rethrow();
    }
    m_image.jpegData = jpeg->first;
    m_image.decoded = jpeg->second;
}

QCoro::Task<> ImageGathering::gatherAudioNote() {
    m_image.audioTranscription = co_await transcribeAudioNote(m_parts, m_image.file);
}

} // namespace ostrelle
