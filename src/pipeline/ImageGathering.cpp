// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/ImageGathering.h"

#include "metadata/facts/XMPError.h"
#include "metadata/sidecar/SidecarPath.h"
#include "pipeline/AudioNote.h"
#include "pipeline/CaptionAcceptance.h"
#include "pipeline/FolderWork.h"
#include "pipeline/SidecarCreation.h"
#include "platform/FileError.h"

#include <QFileInfo>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// Stands for a caption that is not there, in the prompt and in comparisons.
const QString noCaption = u"No caption"_s;

} // namespace

ImageGathering::ImageGathering(AnalyzerParts parts, QString file)
    : m_parts(parts), m_name(QFileInfo(file).fileName()), m_metadata(file) {
    m_image.file = std::move(file);
    m_image.source.zone = parts.clock.timeZone();
    m_image.defaultCaption = noCaption;
}

QCoro::Task<> ImageGathering::ensureSidecar() {
    const auto created =
        co_await attempt(createSidecar(m_parts.threads, m_parts.access, m_parts.log.console(), m_image.file));
    if (created) {
        co_return;
    }
    m_parts.log.printAndAppend(
        u"[Analyzer] Failed to create XMP sidecar for RAW file %1 in folder: %2. Error: %3. This may be a "
        "permissions issue. Try selecting both the RAW and XMP files, or move the file to a different folder "
        "with write permissions."_s.arg(m_name, QFileInfo(m_image.file).path(), created.words()));
    created.rethrow();
}

QCoro::Task<> ImageGathering::open() {
    if (isRead()) {
        co_return;
    }
    auto read = [metadata = m_metadata, zone = m_image.source.zone] { return metadata.read(zone); };
    m_reading = co_await attempt(onThreadOf(m_parts.threads, m_image.file, read));
    if (*m_reading) {
        takeFacts();
    }
}

void ImageGathering::takeFacts() {
    const MetadataReading& reading = **m_reading;
    say(reading.captionLines);
    m_contextLines = reading.contextLines;
    m_rightsLines = reading.rightsLines;
    m_imageStamp = reading.image;
    m_image.source.facts = reading.facts;
}

QCoro::Task<> ImageGathering::readCaption() {
    co_await open();
    if (isRead() || !isUnreadableSidecar()) {
        takeCaption();
        co_return;
    }
    m_parts.log.print(
        u"[Analyzer] Permission error reading default caption from XMP for %1, attempting to recreate "
        "sidecar..."_s.arg(m_name));
    co_await recreateSidecar();
    m_parts.log.print(u"[Analyzer] Recreated unreadable XMP sidecar for "_s + m_name);
}

void ImageGathering::takeCaption() {
    if (!isRead()) {
        m_parts.log.printAndAppend(
            u"[Analyzer] Could not read metadata for %1: %2"_s.arg(m_name, m_reading->words()));
        m_reading->rethrow();
    }
    const std::optional<QString>& caption = facts().caption;
    m_caption = caption ? std::optional(caption->trimmed()) : std::nullopt;
    m_image.defaultCaption = m_caption.value_or(noCaption);
}

bool ImageGathering::isSidecarMissing() const {
    const bool hasFailed = m_reading && !*m_reading;
    const auto error = hasFailed ? m_reading->failureAs<XMPError>() : std::nullopt;
    return !m_metadata.isEmbedded() && error && error->kind() == XMPError::Case::fileMissing;
}

bool ImageGathering::isUnreadableSidecar() const {
    const auto error = m_reading->failureAs<FileError>();
    return !m_metadata.isEmbedded() && error && error->isPermissionDenied();
}

/// A sidecar that nobody may read is of no use to anybody: a new one takes its place, without a caption.
QCoro::Task<> ImageGathering::recreateSidecar() {
    const ScopedAccess fileAccess(m_parts.access, sidecarPath(m_image.file));
    const ScopedAccess folderAccess(m_parts.access, QFileInfo(m_image.file).path());
    auto recreate = [metadata = m_metadata, zone = m_image.source.zone] {
        metadata.replaceUnreadableSidecar();
        return metadata.read(zone);
    };
    m_reading = co_await attempt(onThreadOf(m_parts.threads, m_image.file, recreate));
    if (!*m_reading) {
        m_parts.log.printAndAppend(
            u"[Analyzer] Could not read metadata for %1: %2"_s.arg(m_name, m_reading->words()));
        m_reading->rethrow();
    }
    takeFacts();
}

bool ImageGathering::isFinished() {
    if (m_parts.settings.alwaysOverwriteCaptions() || !isRealCaption(m_caption.value_or(QString()))) {
        return false;
    }
    m_parts.log.printAndAppend(
        u"[Analyzer] %1 already has caption, skipping (overwrite disabled)"_s.arg(m_name));
    return true;
}

QCoro::Task<> ImageGathering::requireEditable() {
    auto look = [file = m_image.file] { return EditConditions::of(file); };
    m_editConditions = co_await onThreadOf(m_parts.threads, m_image.file, look);
    auto check = [metadata = m_metadata](PlainLog& log) { metadata.requireEditable(log); };
    const auto checked =
        co_await attempt(onThreadOf(m_parts.threads, m_image.file, m_parts.log.console(), check));
    if (!checked) {
        m_parts.log.printAndAppend(
            u"[Analyzer] The model is not asked about %1, as no caption can be written: %2"_s.arg(
                m_name, checked.words()));
        checked.rethrow();
    }
}

QCoro::Task<> ImageGathering::extractPreview() {
    constexpr double longestSide = 1024; // pixels
    constexpr double jpegQuality = 0.6;
    constexpr double rawQuality = 0.85;
    const double quality = m_metadata.isEmbedded() ? jpegQuality : rawQuality;
    auto extract = [file = m_image.file, quality] { return seePicture(file, longestSide, quality); };
    QThreadPool* renderers = m_parts.threads.renderersOf(QFileInfo(m_image.file).path());
    const auto picture = co_await attempt(onThreadPool(renderers, extract));
    if (!picture) {
        m_parts.log.printAndAppend(
            u"[Analyzer] Failed to extract preview for %1: %2"_s.arg(m_name, picture.words()));
        picture.rethrow();
    }
    m_image.source.picture = *picture;
    sayPreview(picture->rendition);
}

void ImageGathering::sayPreview(const Rendition& rendition) {
    if (rendition.source == Rendition::Source::embeddedPreview) {
        m_parts.log.printAndAppend(
            u"[Analyzer] %1 is shown by its embedded preview of %2 x %3 pixels, as its RAW data cannot be "
            "used: %4"_s.arg(m_name, QString::number(rendition.previewSize.width),
                             QString::number(rendition.previewSize.height), rendition.reason));
    }
}

QCoro::Task<> ImageGathering::gatherAudioNote() {
    m_image.audioTranscription = co_await transcribeAudioNote(m_parts, m_image.file);
}

void ImageGathering::say(const QStringList& lines) {
    for (const QString& line : lines) {
        m_parts.log.print(line);
    }
}

} // namespace ostrelle
