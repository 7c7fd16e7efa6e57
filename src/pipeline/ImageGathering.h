// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/AnalyzerParts.h"
#include "pipeline/ImageMetadata.h"
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
    /// Puts a new sidecar in the place of one that nobody may read.
    QCoro::Task<> readCaption();
    /// True when the image is to be left alone, which is said in the log: it has a caption, and captions are
    /// not to be overwritten.
    bool isFinished();
    QCoro::Task<> readContext();
    /// As readContext(), with a new sidecar in the place of one that nobody may read.
    QCoro::Task<> readContextOrRecreate();
    /// Whatever cannot be read stays unset.
    QCoro::Task<> readRightsAndCreator();
    QCoro::Task<> extractPreview();
    /// A note that cannot be transcribed is left out.
    QCoro::Task<> gatherAudioNote();

    const PreparedImage& image() const { return m_image; }
    const QString& name() const { return m_name; }
    const ImageMetadata& metadata() const { return m_metadata; }
    /// Trimmed, and nothing before readCaption() and when there is none.
    const std::optional<QString>& caption() const { return m_caption; }
    const std::optional<QString>& creator() const { return m_creator; }

private:
    QCoro::Task<> recreateSidecar();

    AnalyzerParts m_parts;
    QString m_name;
    ImageMetadata m_metadata;
    PreparedImage m_image;
    std::optional<QString> m_caption;
    std::optional<QString> m_creator;
};

} // namespace ostrelle
