// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Attempt.h"
#include "metadata/facts/ImageFacts.h"
#include "pipeline/AnalyzerParts.h"
#include "pipeline/OpenedImage.h"
#include "pipeline/PreparedImage.h"

#include <QCoroTask>
#include <QString>
#include <QStringList>
#include <memory>
#include <optional>

namespace ostrelle {

/// Gathers the facts of one image step by step, for single images and batches alike. Unless stated otherwise,
/// a step that fails logs a line and throws. Lives on the coroutine frame that awaits its steps.
class ImageGathering {
public:
    /// `ahead` is what was read of the image ahead of its run, or null.
    ImageGathering(AnalyzerParts parts, QString file, Opening opening = {},
                   std::shared_ptr<const OpenedImage> ahead = nullptr);
    ~ImageGathering();
    ImageGathering(const ImageGathering&) = delete;
    ImageGathering& operator=(const ImageGathering&) = delete;

    /// Opens the image for all steps below; a second call does nothing. Does not throw: the steps do.
    QCoro::Task<> open();
    /// Why no sidecar could be made for an opened image; empty if nothing went wrong.
    QString sidecarFailure() const { return m_opened->sidecar ? QString() : m_opened->sidecar.words(); }
    /// The caption of an opened image as read; nothing if it has none or could not be read.
    std::optional<QString> readCaption() const;

    /// Throws if a sidecar could not be made.
    void requireSidecar();
    /// Takes the facts from the metadata. If the sidecar may not be read and sidecars may be made, sets it
    /// aside and puts a new one in its place; the image then has no caption.
    QCoro::Task<> takeFacts();
    /// True when the image keeps its caption, which is logged: it has a real one, and the settings forbid
    /// overwriting.
    bool isFinished();
    void logContext() { print(m_opened->metadata->reading.contextLines); }
    void logSidecar();
    void logRights() { print(m_opened->metadata->reading.rightsLines); }
    /// Throws if no caption could be written.
    void requireEditable();
    /// Renders the picture for the model, unless that was done ahead.
    QCoro::Task<> extractPreview();
    /// Transcribes the audio note. Never throws: one that cannot be transcribed is left out.
    QCoro::Task<> gatherAudioNote();

    const PreparedImage& image() const { return m_image; }
    const ImageFacts& facts() const { return m_image.source.facts; }
    /// The stamp of the image file from before its metadata were read; nothing if they could not be.
    std::optional<FileStamp> imageStamp() const;
    /// From before the metadata were read; nothing before open().
    std::optional<EditConditions> editConditions() const;
    const QString& name() const { return m_name; }
    /// Trimmed; nothing before takeFacts(), or if there is none.
    const std::optional<QString>& caption() const { return m_caption; }

private:
    bool isUnreadableSidecar() const;
    QCoro::Task<> recreateSidecar();
    void print(const QStringList& lines);
    void logPreview(const Rendition& rendition);

    AnalyzerParts m_parts;
    QString m_name;
    Opening m_opening;
    std::shared_ptr<const OpenedImage> m_ahead;
    std::optional<OpenedImage> m_opened;
    PreparedImage m_image;
    std::optional<QString> m_caption;
};

} // namespace ostrelle
