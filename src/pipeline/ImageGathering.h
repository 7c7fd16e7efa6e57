// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Attempt.h"
#include "metadata/EditConditions.h"
#include "metadata/ImageMetadata.h"
#include "pipeline/AnalyzerParts.h"
#include "pipeline/PreparedImage.h"

#include <QCoroTask>
#include <QString>
#include <optional>

namespace ostrelle {

/// Gathers what is known of one image, a step each: what a single image and a batch have in common. Steps
/// throw what went wrong, after a line in the log. It lives on the frame that awaits its steps.
class ImageGathering {
public:
    ImageGathering(AnalyzerParts parts, QString file);
    ImageGathering(const ImageGathering&) = delete;
    ImageGathering& operator=(const ImageGathering&) = delete;

    /// A RAW image has a sidecar from here on.
    QCoro::Task<> ensureSidecar();
    /// Opens the metadata, unless they have been read. What goes wrong is left to the next two; does not
    /// throw.
    QCoro::Task<> open();
    /// Takes the caption from what open() has read.
    void takeCaption();
    /// Both. A sidecar that nobody may read is set aside, and a new one takes its place.
    QCoro::Task<> readCaption();
    /// True when the image is to be left alone, which is said in the log: it has a caption, and captions are
    /// not to be overwritten.
    bool isFinished();
    /// Finds out whether the caption could be written, and editConditions().
    QCoro::Task<> requireEditable();
    QCoro::Task<> extractPreview();
    /// A note that cannot be transcribed is left out.
    QCoro::Task<> gatherAudioNote();

    /// What was read says of the context and of the rights, for the log.
    void sayContext() { say(m_contextLines); }
    void sayRights() { say(m_rightsLines); }

    const PreparedImage& image() const { return m_image; }
    const ImageFacts& facts() const { return m_image.source.facts; }
    /// The image file from before it was opened.
    const std::optional<FileStamp>& imageStamp() const { return m_imageStamp; }
    const std::optional<EditConditions>& editConditions() const { return m_editConditions; }
    const QString& name() const { return m_name; }
    const ImageMetadata& metadata() const { return m_metadata; }
    /// Trimmed, and nothing before readCaption() and when there is none.
    const std::optional<QString>& caption() const { return m_caption; }
    /// Whether open() has read the metadata.
    bool isRead() const { return m_reading && *m_reading; }
    /// Whether open() has found no sidecar.
    bool isSidecarMissing() const;

private:
    using Reading = Attempt<MetadataReading>;

    bool isUnreadableSidecar() const;
    QCoro::Task<> recreateSidecar();
    void takeFacts();
    void say(const QStringList& lines);
    void sayPreview(const Rendition& rendition);

    AnalyzerParts m_parts;
    QString m_name;
    ImageMetadata m_metadata;
    PreparedImage m_image;
    std::optional<Reading> m_reading;
    std::optional<QString> m_caption;
    std::optional<FileStamp> m_imageStamp;
    std::optional<EditConditions> m_editConditions;
    QStringList m_contextLines;
    QStringList m_rightsLines;
};

} // namespace ostrelle
