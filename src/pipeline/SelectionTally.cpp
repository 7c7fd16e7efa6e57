// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/SelectionTally.h"

#include "core/Text.h"
#include "pipeline/AnalyzerError.h"
#include "pipeline/FailedImages.h"
#include "pipeline/ManualSelection.h"

#include <QFileInfo>
#include <algorithm>
#include <exception>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// The exception, or for a failure without one the error that stands for images of a batch.
std::exception_ptr failureOf(const ImageOutcome& image) {
    return image.cause ? image.cause
                       : std::make_exception_ptr(
                             AnalyzerError(AnalyzerError::imageFailed, u"Failed to process image"_s));
}

} // namespace

SelectionTally SelectionTally::of(const QList<ImageOutcome>& images) {
    SelectionTally tally;
    for (const ImageOutcome& image : images) {
        tally.m_success += image.kind == OutcomeKind::captioned ? 1 : 0;
        if (isFailure(image.kind)) {
            tally.addFailure(image.file, classifyFailure(failureOf(image), image.file));
            if (const QString reason = sharedReason(image); !tally.m_reasons.contains(reason)) {
                tally.m_reasons.append(reason);
            }
        }
    }
    return tally;
}

void SelectionTally::addFailure(const QString& image, const ImageFailure& failure) {
    m_failedImages.append(image);
    if (failure.kind == ImageFailure::Kind::rateLimit) {
        m_rateLimitedNames.append(QFileInfo(image).fileName());
    }
    if (failure.kind == ImageFailure::Kind::permission) {
        m_permissionWords.append(failure.words);
        m_mentionsRateLimit = m_mentionsRateLimit || failure.mentionsRateLimit;
    }
}

QStringList SelectionTally::failedNames() const {
    QStringList names;
    for (const QString& image : m_failedImages) {
        names.append(QFileInfo(image).fileName());
    }
    return names;
}

std::optional<QString> SelectionTally::hint() const {
    if (std::none_of(m_failedImages.begin(), m_failedImages.end(), isSelectableRaw)) {
        return std::nullopt;
    }
    return u"When manually captioning RAW files, also select the matching .xmp sidecar(s)."_s;
}

std::optional<QString> SelectionTally::reasons() const {
    return m_reasons.isEmpty() ? std::nullopt : std::optional(m_reasons.mid(0, 2).join(u' '));
}

QString SelectionTally::firstFailedFolder() const {
    return QFileInfo(m_failedImages.value(0)).path();
}

QString SelectionTally::errorDetail() const {
    constexpr qsizetype listed = 3;
    const QString words = m_permissionWords.mid(0, listed).join(u"; "_s);
    if (m_permissionWords.size() <= listed) {
        return words;
    }
    return words + u"... and %1 more"_s.arg(m_permissionWords.size() - listed);
}

Alert SelectionTally::permissionAlert() const {
    Alert alert;
    alert.title = u"Permission Error — Cannot Write to Folder"_s;
    alert.text = u"Ostrelle Captions cannot write captions to files in this location.\n\nTo fix this:\n"
                 "1. Grant Full Disk Access in System Preferences → Privacy & Security\n"
                 "2. Or use the Watch Folder feature to process images automatically\n"
                 "3. Or copy images to a folder you have write access to (like Desktop)\n\n"
                 "Location: "_s +
                 firstFailedFolder();
    alert.buttons = QStringList{u"Open System Preferences"_s, u"Use Watch Folder Instead"_s};
    alert.style = Alert::Style::warning;
    return alert;
}

QString SelectionTally::closingMessage() const {
    if (failed() == 0 && m_success == 0) {
        return u"All images have captions already"_s;
    }
    if (failed() == 0) {
        return u"Successfully captioned %1 image%2"_s.arg(m_success).arg(plural(m_success));
    }
    if (m_success == 0) {
        return u"Failed to caption %1 image%2"_s.arg(failed()).arg(plural(failed()));
    }
    return u"Captioned %1 image%2, failed %3"_s.arg(m_success).arg(plural(m_success)).arg(failed());
}

} // namespace ostrelle
