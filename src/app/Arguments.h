// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <optional>

namespace ostrelle {

/// Prints what `--help` or `--version` asks for and returns the exit status; nothing when the program is to
/// start. Needs no display.
std::optional<int> answerArguments(int argc, const char* const* argv);

/// The files to caption among the arguments that the windowing system has left, as absolute paths.
struct StartFiles {
    QStringList files;
    QString error = {}; ///< a sentence about an argument that is no file; empty when there is none
};

/// Relative paths are of the current folder. A name that is not UTF-8 cannot be opened.
StartFiles startFiles(int argc, const char* const* argv);

} // namespace ostrelle
