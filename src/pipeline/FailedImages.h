// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/ImageOutcome.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

namespace ostrelle {

/// Images that should have a caption and have none, all for one reason.
struct FailedGroup {
    enum class Remedy {
        tryAgain,
        enterKey,
        openFolder, ///< the captions cannot be written there
    };

    QString reason; ///< a sentence
    Remedy remedy = Remedy::tryAgain;
    QStringList files; ///< paths, in the order in which they failed
};

/// Why the image failed, without what differs from image to image.
QString sharedReason(const ImageOutcome& image);

/// The images that failed since the start of the program, by reason. An image leaves when it is done, or when
/// the user lets it go. Kept in memory only.
class FailedImages : public QObject {
    Q_OBJECT

public:
    /// Takes note of an image's final outcome.
    void take(const ImageOutcome& image);
    /// The reason that came first is first.
    const QList<FailedGroup>& groups() const { return m_groups; }
    /// Forgets the images that failed for this reason.
    void letGo(const QString& reason);

Q_SIGNALS:
    void changed();

private:
    bool remove(const QString& file);

    QList<FailedGroup> m_groups;
};

} // namespace ostrelle
