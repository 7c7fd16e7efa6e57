// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/ManualSelection.h"

#include "metadata/facts/ImageKind.h"

#include <QFileInfo>
#include <QSet>
#include <algorithm>
#include <iterator>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString sidecarExtension = u"xmp"_s;

/// Fewer kinds than in a watched folder: those for which photographers keep sidecars.
const QStringList& rawExtensions() {
    static const QStringList extensions = {u"cr3"_s, u"cr2"_s, u"nef"_s, u"orf"_s, u"arw"_s, u"dng"_s};
    return extensions;
}

/// The part of the name that an image and its sidecar share.
QString stemOf(const QString& file) {
    return QFileInfo(file).completeBaseName().toLower();
}

Alert refusal(const QString& title, const QString& text, Alert::Style style) {
    Alert alert;
    alert.title = title;
    alert.text = text;
    alert.buttons = QStringList{u"OK"_s};
    alert.style = style;
    return alert;
}

} // namespace

ManualSelection ManualSelection::of(const QStringList& files) {
    ManualSelection selection;
    QSet<QString> seen;
    for (const QString& file : files) {
        if (extensionOf(file) == sidecarExtension) {
            selection.sidecars.append(file);
        } else if ((isSelectableRaw(file) || isJpegImage(file)) && !seen.contains(file)) {
            seen.insert(file);
            selection.images.append(file);
        }
    }
    return selection;
}

QStringList ManualSelection::rawImages() const {
    QStringList raws;
    std::copy_if(images.begin(), images.end(), std::back_inserter(raws), isSelectableRaw);
    return raws;
}

bool ManualSelection::hasAllSidecars() const {
    QSet<QString> stems;
    for (const QString& sidecar : sidecars) {
        stems.insert(stemOf(sidecar));
    }
    const QStringList raws = rawImages();
    return std::all_of(raws.begin(), raws.end(),
                       [&stems](const QString& raw) { return stems.contains(stemOf(raw)); });
}

bool isSelectableRaw(const QString& file) {
    return rawExtensions().contains(extensionOf(file));
}

std::optional<QString> workingFolder(const SettingsStore& settings) {
    return settings.sourceType() == SourceType::local ? settings.ingestFolder()
                                                      : settings.destinationFolder();
}

FileQuestion imageQuestion(const SettingsStore& settings) {
    return {.title = u"Select images to caption (select XMP files too for RAW images)"_s,
            .startFolder = workingFolder(settings).value_or(QString()),
            .extensions = rawExtensions() + QStringList{u"jpg"_s, u"jpeg"_s, sidecarExtension},
            .extensionsName = u"Images and XMP sidecars"_s};
}

std::optional<QString> imageQuestionLogLine(const SettingsStore& settings) {
    const std::optional<QString> folder = workingFolder(settings);
    if (!folder) {
        return std::nullopt;
    }
    return (settings.sourceType() == SourceType::local
                ? u"[MenuContentView] Opening file picker in watch folder: "_s
                : u"[MenuContentView] Opening file picker in FTP destination folder: "_s) +
           *folder;
}

std::optional<Alert> missingSidecarsAlert(const ManualSelection& selection) {
    if (selection.hasAllSidecars()) {
        return std::nullopt;
    }
    return refusal(u"RAW files selected without XMP sidecars"_s,
                   u"Please also select the matching .xmp sidecar files for RAW images to proceed."_s,
                   Alert::Style::warning);
}

std::optional<Alert> missingImagesAlert(const ManualSelection& selection) {
    if (!selection.images.isEmpty()) {
        return std::nullopt;
    }
    return refusal(u"No Images Selected"_s, u"Please select at least one image file to caption."_s,
                   Alert::Style::informational);
}

} // namespace ostrelle
