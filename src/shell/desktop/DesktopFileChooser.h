// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DefaultsStore.h"
#include "platform/FileChooser.h"

#include <QCoroTask>
#include <optional>

namespace ostrelle {

/// The desktop's own dialogs. Without a start folder they open the folder last visited, even after a restart.
class DesktopFileChooser : public FileChooser {
public:
    /// The store must outlive the chooser.
    explicit DesktopFileChooser(DefaultsStore& defaults) : m_defaults(defaults) {}

    QCoro::Task<std::optional<QString>> chooseFolder(FileQuestion question) override;
    QCoro::Task<std::optional<QString>> chooseFile(FileQuestion question) override;
    QCoro::Task<QStringList> chooseFiles(FileQuestion question) override;

private:
    enum class Choice { folder, file, files };

    QCoro::Task<QStringList> ask(FileQuestion question, Choice choice);
    QString startFolder(const FileQuestion& question) const;

    DefaultsStore& m_defaults;
};

} // namespace ostrelle
