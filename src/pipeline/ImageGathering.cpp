// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/ImageGathering.h"

#include "metadata/ImageMetadata.h"
#include "pipeline/AudioNote.h"
#include "pipeline/CaptionAcceptance.h"
#include "pipeline/FolderWork.h"
#include "platform/FileError.h"

#include <QFileInfo>
#include <QThreadPool>
#include <exception>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// Stands for a missing caption, in the prompt and in comparisons.
const QString noCaption = u"No caption"_s;

} // namespace

ImageGathering::ImageGathering(AnalyzerParts parts, QString file, Opening opening,
                               std::shared_ptr<const OpenedImage> ahead)
    : m_parts(parts), m_name(QFileInfo(file).fileName()), m_opening(opening), m_ahead(std::move(ahead)) {
    m_image.file = std::move(file);
    m_image.source.zone = parts.clock.timeZone();
    m_image.defaultCaption = noCaption;
}

/// Closing a file may wait for its network share, too.
ImageGathering::~ImageGathering() {
    if (m_opened && m_opened->image) {
        m_parts.threads.of(QFileInfo(m_image.file).path())->start([image = m_opened->image]() mutable {
            image.reset();
        });
    }
}

QCoro::Task<> ImageGathering::open() {
    if (m_opened) {
        co_return;
    }
    const ScopedAccess fileAccess(m_parts.access, m_image.file);
    const ScopedAccess folderAccess(m_parts.access, QFileInfo(m_image.file).path());
    auto read = [file = m_image.file, zone = m_image.source.zone, opening = m_opening, ahead = m_ahead] {
        return openImage(file, zone, opening, ahead.get());
    };
    m_opened = co_await onThreadOf(m_parts.threads, m_image.file, read);
    if (m_opened->sidecar && *m_opened->sidecar) {
        m_parts.log.print(u"[Analyzer] Created XMP sidecar for "_s + m_name);
    }
    if (m_opened->metadata) {
        print(m_opened->metadata->reading.captionLines);
    }
    m_image.source.picture = m_opened->picture.value_or(SeenPicture());
}

std::optional<QString> ImageGathering::readCaption() const {
    return m_opened->metadata ? m_opened->metadata->reading.facts.caption : std::nullopt;
}

void ImageGathering::requireSidecar() {
    if (!m_opened->sidecar) {
        m_parts.log.printAndAppend(
            u"[Analyzer] Failed to create XMP sidecar for RAW file %1 in folder: %2. Error: %3. This may be "
            "a permissions issue. Try selecting both the RAW and XMP files, or move the file to a different "
            "folder with write permissions."_s.arg(m_name, QFileInfo(m_image.file).path(),
                                                   m_opened->sidecar.words()));
        m_opened->sidecar.rethrow();
    }
}

QCoro::Task<> ImageGathering::takeFacts() {
    const bool isRecreated = isUnreadableSidecar() && m_opening.makesSidecar;
    if (isRecreated) {
        m_parts.log.print(
            u"[Analyzer] Permission error reading default caption from XMP for %1, attempting to recreate "
            "sidecar..."_s.arg(m_name));
        co_await recreateSidecar();
    }
    if (!m_opened->metadata) {
        m_parts.log.printAndAppend(
            u"[Analyzer] Could not read metadata for %1: %2"_s.arg(m_name, m_opened->metadata.words()));
        m_opened->metadata.rethrow();
    }
    m_image.source.facts = m_opened->metadata->reading.facts;
    if (!isRecreated) {
        const std::optional<QString>& caption = facts().caption;
        m_caption = caption ? std::optional(caption->trimmed()) : std::nullopt;
        m_image.defaultCaption = m_caption.value_or(noCaption);
    }
}

/// A sidecar that may not be read is of no use: an empty one takes its place.
QCoro::Task<> ImageGathering::recreateSidecar() {
    const ScopedAccess fileAccess(m_parts.access, ImageMetadata(m_image.file).expectedPlace());
    const ScopedAccess folderAccess(m_parts.access, QFileInfo(m_image.file).path());
    auto recreate = [file = m_image.file, zone = m_image.source.zone, opening = m_opening] {
        ImageMetadata(file).replaceUnreadableSidecar();
        return openImage(file, zone, opening);
    };
    const auto recreated = co_await attempt(onThreadOf(m_parts.threads, m_image.file, recreate));
    if (recreated) {
        m_opened = *recreated;
    } else {
        m_opened->metadata = Attempt<EditableReading>::failed(recreated.failure());
    }
    if (m_opened->metadata) {
        m_parts.log.print(u"[Analyzer] Recreated unreadable XMP sidecar for "_s + m_name);
    }
}

bool ImageGathering::isUnreadableSidecar() const {
    const auto error = m_opened->metadata.failureAs<FileError>();
    return error && error->isPermissionDenied();
}

bool ImageGathering::isFinished() {
    if (m_parts.settings.alwaysOverwriteCaptions() || !isRealCaption(m_caption.value_or(QString()))) {
        return false;
    }
    m_parts.log.printAndAppend(
        u"[Analyzer] %1 already has caption, skipping (overwrite disabled)"_s.arg(m_name));
    return true;
}

void ImageGathering::logSidecar() {
    if (!m_opened->sidecarDump.isEmpty()) {
        m_parts.log.printAndAppend(m_opened->sidecarDump);
    }
}

void ImageGathering::requireEditable() {
    const EditableReading& metadata = *m_opened->metadata;
    for (const QString& line : metadata.refusalLines) {
        m_parts.log.print(line);
    }
    if (metadata.refusal) {
        m_parts.log.printAndAppend(
            u"[Analyzer] The model is not asked about %1, as no caption can be written: %2"_s.arg(
                m_name, wordsOf(metadata.refusal)));
        std::rethrow_exception(metadata.refusal);
    }
}

QCoro::Task<> ImageGathering::extractPreview() {
    if (!m_opened->picture) {
        QThreadPool* renderers = m_parts.threads.renderersOf(QFileInfo(m_image.file).path());
        auto render = [image = std::exchange(m_opened->image, nullptr)] { return seePicture(*image); };
        const auto picture = co_await attempt(onThreadPool(renderers, render));
        if (!picture) {
            m_parts.log.printAndAppend(
                u"[Analyzer] Failed to extract preview for %1: %2"_s.arg(m_name, picture.words()));
            picture.rethrow();
        }
        m_image.source.picture = *picture;
    }
    logPreview(m_image.source.picture.rendition);
}

void ImageGathering::logPreview(const Rendition& rendition) {
    if (rendition.source == Rendition::Source::embeddedPreview) {
        m_parts.log.printAndAppend(
            u"[Analyzer] %1 is shown by its embedded preview of %2 x %3 pixels, as its RAW data cannot be "
            "used: %4"_s.arg(m_name, QString::number(rendition.previewSize.width),
                             QString::number(rendition.previewSize.height), rendition.reason));
    }
}

QCoro::Task<> ImageGathering::gatherAudioNote() {
    QThreadPool* reader = m_parts.threads.of(QFileInfo(m_image.file).path());
    const AudioWeight weight =
        m_parts.settings.prioritizeAudioFiles() ? AudioWeight::priority : AudioWeight::context;
    m_image.audioTranscription = co_await transcribeAudioNote(m_parts.openAI, m_parts.log, reader, weight,
                                                              m_name, m_opened->audioNotes);
}

std::optional<FileStamp> ImageGathering::imageStamp() const {
    return m_opened && m_opened->metadata ? m_opened->metadata->reading.image : std::nullopt;
}

std::optional<EditConditions> ImageGathering::editConditions() const {
    return m_opened ? std::optional(m_opened->conditions) : std::nullopt;
}

void ImageGathering::print(const QStringList& lines) {
    for (const QString& line : lines) {
        m_parts.log.print(line);
    }
}

} // namespace ostrelle
