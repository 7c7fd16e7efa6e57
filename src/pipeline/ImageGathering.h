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

/// Gathers what is known of one image, a step each: what a single image and a batch have in common. Steps
/// throw what went wrong, after a line in the log. It lives on the frame that awaits its steps.
class ImageGathering {
public:
    /// With what was read of the image ahead.
    ImageGathering(AnalyzerParts parts, QString file, Opening opening = {},
                   std::shared_ptr<const ImageAhead> ahead = nullptr);
    ImageGathering(const ImageGathering&) = delete;
    ImageGathering& operator=(const ImageGathering&) = delete;

    /// Opens the image, once, for all steps below. Does not throw: what went wrong is left to them.
    QCoro::Task<> open();
    /// Of an opened image: why there is no sidecar and none could be made; empty when that went well.
    QString sidecarFailure() const { return m_opened->sidecar ? QString() : m_opened->sidecar.words(); }
    /// Of an opened image: the caption as it was read; nothing when it could not be.
    std::optional<QString> readCaption() const;
    /// Of an opened image: whether it has no sidecar.
    bool isSidecarMissing() const;

    void requireSidecar();
    /// A sidecar that nobody may read is set aside, and a new one takes its place: the image has no caption
    /// then.
    QCoro::Task<> takeFacts();
    /// True when the image is to be left alone, which is logged: it has a caption, and captions are not to be
    /// overwritten.
    bool isFinished();
    void logContext() { print(m_contextLines); }
    void logSidecar();
    void logRights() { print(m_rightsLines); }
    /// A caption could be written.
    void requireEditable();
    QCoro::Task<> extractPreview();
    /// A note that cannot be transcribed is left out.
    QCoro::Task<> gatherAudioNote();

    const PreparedImage& image() const { return m_image; }
    const ImageFacts& facts() const { return m_image.source.facts; }
    /// The image file from before it was opened.
    std::optional<FileStamp> imageStamp() const;
    std::optional<EditConditions> editConditions() const;
    const QString& name() const { return m_name; }
    bool isEmbedded() const;
    /// Trimmed; nothing before takeFacts() and when there is none.
    const std::optional<QString>& caption() const { return m_caption; }

private:
    bool isUnreadableSidecar() const;
    QCoro::Task<> recreateSidecar();
    void take(const MetadataReading& reading);
    void print(const QStringList& lines);
    void logPreview(const Rendition& rendition);

    AnalyzerParts m_parts;
    QString m_name;
    Opening m_opening;
    std::shared_ptr<const ImageAhead> m_ahead;
    std::optional<OpenedImage> m_opened;
    PreparedImage m_image;
    std::optional<QString> m_caption;
    QStringList m_contextLines;
    QStringList m_rightsLines;
};

} // namespace ostrelle
