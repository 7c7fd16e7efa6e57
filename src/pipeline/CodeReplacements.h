// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/PromptLibrary.h"
#include "core/RosterEntry.h"
#include "platform/FileError.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

namespace ostrelle {

/// A file of Photo Mechanic's code replacements that serves as the roster, and how it was found.
struct CodeReplacementsFile {
    QString path;
    bool isManuallySelected = false;
};

/// The roster in the folder itself, by the first of its usual names that exists. Reads the disk: for worker
/// threads.
std::optional<QString> findCodeReplacementsFile(const QString& folder);

/// Whether a run over the folder has a roster: the selected file, or one in the folder. Reads the disk.
bool hasCodeReplacementsFile(const std::optional<QString>& selectedFile, const QString& folder);

/// The roster to use: the selected file, or else one in the ingest folder. Reads the disk.
std::optional<CodeReplacementsFile> resolveCodeReplacementsFile(const std::optional<QString>& selectedFile,
                                                                const std::optional<QString>& ingestFolder);

/// The roster as it goes to the model, and what the log shows of it. Characters are user-perceived ones.
struct CodeReplacements {
    static constexpr qsizetype mostCharacters = 20'000; ///< the most that go to the model

    QString roster; ///< the text, cut after a whole line if it is too long
    qsizetype rosterCharacterCount = 0;
    qsizetype characterCount = 0; ///< of the whole text; 0 means that there is no roster
    qsizetype lineCount = 0;      ///< lines that are not empty
    qsizetype uniqueKeyCount = 0;
    QStringList sampleKeys; ///< the first few
    QString preview;        ///< the beginning of the text
    bool isUtf8 = true;     ///< if not, there is no text

    bool isTruncated() const { return characterCount > mostCharacters; }
};

/// Parses a file's bytes. Bytes that are not UTF-8 give no roster.
CodeReplacements parseCodeReplacements(const QByteArray& bytes);

/// Reads a roster from a file of at most 16 MiB. Throws FileError, with EFBIG for a larger one.
CodeReplacements readCodeReplacements(const QString& path);

/// Why the names of a roster that was read from a file of that name will not be used, or may be missing: a
/// sentence for the user, with a remedy if there is one. Empty when all is well.
QString rosterProblem(const CodeReplacements& replacements, const QString& name);
/// The same for one that could not be read.
QString rosterProblem(const FileError& error, const QString& name);

/// What a user wants to know of a roster before the game.
struct RosterState {
    QString problem; ///< as rosterProblem()
    qsizetype entries = 0;
};

/// Reads the file; never throws.
RosterState rosterState(const QString& path);

/// The entries that go to the model, in the file's order. Lines without a tab or a code are left out.
QList<RosterEntry> rosterEntries(const CodeReplacements& replacements);

/// The lines of the log file about the roster, before the model is asked.
QStringList logLines(const CodeReplacements& replacements);

/// The console line for a cut roster in a prompt.
QString truncationWarning(const CodeReplacements& replacements);

/// The line of the log file for a cut roster in the prompt of a single image.
QString truncationLogLine(const CodeReplacements& replacements);

/// The part of a prompt with the roster and how to use it; empty without a roster.
QString codeReplacementsBlock(const CodeReplacements& replacements, PromptLibrary::Prompt prompt,
                              bool includeOffenseDefense);

} // namespace ostrelle
