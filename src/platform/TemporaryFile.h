// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Descriptor.h"
#include "platform/Files.h"

#include <sys/types.h>

#include <filesystem>
#include <string_view>

namespace ostrelle {

/// True for names that TemporaryFile makes, in the file system's encoding, without the folder.
bool isTemporaryName(std::string_view name);

/// A hidden name of that kind beside the path.
std::filesystem::path temporaryNameFor(const std::filesystem::path& path);

/// The outcome of putting a file in its place; `failed` leaves the reason in errno.
enum class Placing { done, exists, outdated, failed };

/// A file that is to become another one beside it. Its lock shows removeAbandonedTemporaryFiles() that it is
/// in use. A named file is removed unless it has taken the target's place.
class TemporaryFile {
public:
    /// A file without a name, so that a killed process leaves nothing behind. Not open where the file system
    /// has no nameless files.
    static TemporaryFile nameless(const std::filesystem::path& target, mode_t mode);
    /// A file with a hidden name.
    static TemporaryFile named(const std::filesystem::path& target, mode_t mode);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    bool isOpen() const { return m_file.isOpen(); }
    int descriptor() const { return m_file.number(); }

    /// Gives the file a name in the folder, so that only a rename is left to do.
    bool takeName(const FileMeans& means);
    /// Takes the target's place, whether or not it exists. Needs a name.
    Placing replaceTarget();
    /// Becomes the target unless it now exists. A nameless file fails where it cannot be linked.
    Placing becomeTarget(const FileMeans& means);

private:
    TemporaryFile(const std::filesystem::path& target, std::filesystem::path name, Descriptor file,
                  bool hasName);

    bool link(const std::filesystem::path& name, const FileMeans& means) const;
    bool renameUnlessThere(const FileMeans& means);
    Placing takeEmptyPlace();

    std::filesystem::path m_target;
    std::filesystem::path m_name; ///< hidden, in the target's folder
    Descriptor m_file;
    bool m_hasName;
};

} // namespace ostrelle
