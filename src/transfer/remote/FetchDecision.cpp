// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/remote/FetchDecision.h"

#include <QStringBuilder>
#include <algorithm>
#include <array>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// Sidecars of the other RAW kinds are protected by name and size alone.
constexpr std::array<QStringView, 14> protectedExtensions = {u"cr2", u"CR2", u"cr3",  u"CR3", u"nef",
                                                             u"NEF", u"arw", u"ARW",  u"dng", u"DNG",
                                                             u"jpg", u"JPG", u"jpeg", u"JPEG"};

bool hasSameSize(const FTPFileInfo& file, const LocalCopy& copy) {
    return copy.exists && copy.size == file.size;
}

/// The captioned image that the sidecar belongs to.
std::optional<QString> captionedImageOf(QString sidecar, const IsCaptioned& isCaptioned) {
    const QString stem = sidecar.remove(u".xmp"_s, Qt::CaseInsensitive);
    QString image = stem + u'.';
    const qsizetype end = image.size();
    image.reserve(end + 4); // and written in place, as a listing may hold thousands of sidecars
    for (const QStringView extension : protectedExtensions) {
        image.resize(end + extension.size());
        std::copy(extension.begin(), extension.end(), image.data() + end);
        if (isCaptioned(image)) {
            return image;
        }
    }
    return std::nullopt;
}

} // namespace

FetchDecision decideOnMetadata(const FTPFileInfo& file, const LocalCopy& copy,
                               const IsCaptioned& isCaptioned) {
    const QString subject = u"[FTPWatcher] Metadata file "_s + file.name;
    if (!copy.exists) {
        return {};
    }
    if (isCaptioned(file.name)) {
        return {.isFetched = false,
                .isCaptioned = true,
                .lines = {subject + u" has been processed and exists locally, skipping download (local edits "
                                    "preserved)"_s}};
    }
    if (const std::optional<QString> image = captionedImageOf(file.name, isCaptioned)) {
        return {.isFetched = false,
                .isCaptioned = true,
                .lines = {u"[FTPWatcher] Found processed image: %1 - will preserve XMP edits"_s.arg(*image),
                          subject + u" exists locally and corresponding image has been processed, skipping "
                                    "download (local edits preserved)"_s}};
    }
    if (hasSameSize(file, copy)) {
        return {.isFetched = false,
                .lines = {QString(subject % u" already exists locally with matching size (" %
                                  QString::number(file.size) % u" bytes), skipping download")}};
    }
    return {};
}

FetchDecision decideOnMetadataOf(bool isCaptionedImageKept, const FTPFileInfo& file, const LocalCopy& copy) {
    if (isCaptionedImageKept && copy.exists && !hasSameSize(file, copy)) {
        return {.isFetched = false,
                .isCaptioned = true,
                .lines = {u"[FTPWatcher] Metadata file %1 holds the caption of an image that stays, skipping "
                          "download (local edits preserved)"_s.arg(file.name)}};
    }
    return decideBySize(file, copy, Look::first);
}

FetchDecision decideOnImage(const FTPFileInfo& file, const LocalCopy& copy, const IsCaptioned& isCaptioned,
                            Look look) {
    if (copy.exists && isCaptioned(file.name)) {
        return {.isFetched = false,
                .isCaptioned = true,
                .lines = {u"[FTPWatcher] Image file %1 has been processed and exists locally, skipping "
                          "download (local edits preserved)"_s.arg(file.name)}};
    }
    return decideBySize(file, copy, look);
}

FetchDecision decideBySize(const FTPFileInfo& file, const LocalCopy& copy, Look look) {
    if (hasSameSize(file, copy)) {
        const bool isFirst = look == Look::first;
        const QString line = (isFirst ? u"[FTPWatcher] Image file "_s : u"[FTPWatcher] File "_s) % file.name %
                             u" already exists locally with matching size (" % QString::number(file.size) %
                             (isFirst ? u" bytes), skipping"_s : u" bytes), skipping download"_s);
        return {.isFetched = false, .lines = {line}};
    }
    if (look == Look::again && copy.exists && copy.size) {
        return {.lines = {
                    u"[FTPWatcher] File %1 exists locally but size differs (local: %2, FTP: %3) - will "
                    "re-download"_s.arg(file.name, QString::number(*copy.size), QString::number(file.size))}};
    }
    return {};
}

} // namespace ostrelle
