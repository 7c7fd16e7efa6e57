// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/ImageListing.h"

#include "metadata/facts/ImageKind.h"
#include "platform/FileError.h"

#include <dirent.h>
#include <sys/stat.h>

#include <QByteArray>
#include <QFile>
#include <cerrno>
#include <memory>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

using OpenFolder = std::unique_ptr<DIR, CloseFolder>;

bool isFile(DIR* folder, const dirent& entry) {
    if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN) {
        return entry.d_type == DT_REG;
    }
    struct stat status{};
    // The check assumes that dirfd() may fail, which it cannot for an open folder.
    // NOLINTNEXTLINE(clang-analyzer-unix.StdCLibraryFunctions)
    return ::fstatat(::dirfd(folder), entry.d_name, &status, 0) == 0 && S_ISREG(status.st_mode);
}

void take(DIR* folder, const dirent& entry, ImageListing& listing) {
    const QByteArray bytes(entry.d_name);
    const QString name = QFile::decodeName(bytes);
    if (bytes.startsWith('.')) {
        return;
    }
    ++listing.itemCount;
    if (!isSupportedImage(name) || !isFile(folder, entry)) {
        return;
    }
    if (QFile::encodeName(name) != bytes) { // the decoded name is that of another file, or of none
        listing.illegible.append(name);
        return;
    }
    listing.images.append(name);
    listing.jpegCount += isJpegImage(name) ? 1 : 0;
}

} // namespace

QString illegibleNameWords() {
    return u"Its file name is not UTF-8, so it cannot be opened. Rename it."_s;
}

ImageListing listImages(const QString& folder) {
    const OpenFolder open(::opendir(QFile::encodeName(folder).constData()));
    if (!open) {
        throw FileError(u"read"_s, folder, errno);
    }
    ImageListing listing;
    errno = 0; // readdir() returns null at the end and on failure
    while (const dirent* entry = ::readdir(open.get())) {
        take(open.get(), *entry, listing);
        errno = 0;
    }
    if (errno != 0) {
        throw FileError(u"read"_s, folder, errno);
    }
    return listing;
}

} // namespace ostrelle
