// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoroTask>
#include <QString>
#include <QStringList>
#include <optional>

namespace ostrelle {

/// What the user is asked to choose.
struct FileQuestion {
    QString title;
    QString startFolder;         ///< empty: the folder last visited
    QStringList extensions = {}; ///< of the files to offer, without the dot, in any case; empty offers all
    QString extensionsName = {}; ///< what to call files with these extensions
};

/// Lets the user choose files and folders. Paths are absolute.
class FileChooser {
public:
    virtual ~FileChooser() = default;

    /// Resumes with nothing when the user cancels.
    virtual QCoro::Task<std::optional<QString>> chooseFolder(FileQuestion question) = 0;
    virtual QCoro::Task<std::optional<QString>> chooseFile(FileQuestion question) = 0;
    /// Resumes with an empty list when the user cancels.
    virtual QCoro::Task<QStringList> chooseFiles(FileQuestion question) = 0;
};

} // namespace ostrelle
