// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/PromptLibrary.h"
#include "platform/FileError.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <optional>

namespace ostrelle {

/// A file of Photo Mechanic's code replacements that serves as the roster, and how it was found.
struct CodeReplacementsFile {
    QString path;
    bool isManuallySelected = false;
};

/// The first of the names that a roster may have by itself that exists in the folder, not below it.
std::optional<QString> findCodeReplacementsFile(const QString& folder);

/// Whether there is a roster for a run over the folder: the selected file, or one in the folder.
bool hasCodeReplacementsFile(const std::optional<QString>& selectedFile, const QString& folder);

/// The roster to use: the selected file, or else one in the ingest folder.
std::optional<CodeReplacementsFile> resolveCodeReplacementsFile(const std::optional<QString>& selectedFile,
                                                                const std::optional<QString>& ingestFolder);

/// The roster as it goes to the model, and what is said about it in the log. Characters are those that a
/// person sees.
struct CodeReplacements {
    static constexpr qsizetype mostCharacters = 20'000; ///< that go to the model

    QString roster; ///< the text, cut between two entries where it is too long
    qsizetype rosterCharacterCount = 0;
    qsizetype characterCount = 0; ///< of the whole text; none means that there is no roster
    qsizetype lineCount = 0;      ///< lines that are not empty
    qsizetype uniqueKeyCount = 0;
    QStringList sampleKeys; ///< the first few
    QString preview;        ///< the beginning of the text
    bool isUtf8 = true;     ///< other bytes give no text

    bool isTruncated() const { return characterCount > mostCharacters; }
};

/// Takes a roster from a file's bytes. Bytes that are not UTF-8 give none.
CodeReplacements parseCodeReplacements(const QByteArray& bytes);

/// Reads a roster from a file. Throws FileError, also for a file beyond any roster's size.
CodeReplacements readCodeReplacements(const QString& path);

/// Why the names of the roster will not be used, or may be missing: a sentence for the user, with what to do
/// about it. Empty when all is well. Reads the file.
QString rosterProblem(const QString& path);
/// The same of a roster that has been read, or could not be, from a file of that name.
QString rosterProblem(const CodeReplacements& replacements, const QString& name);
QString rosterProblem(const FileError& error, const QString& name);

/// What the log file says about the roster before the model is asked.
QStringList logLines(const CodeReplacements& replacements);

/// What the console says when a roster that was cut goes into a prompt.
QString truncationWarning(const CodeReplacements& replacements);

/// What the log file says when a roster that was cut goes into the prompt of one image.
QString truncationLogLine(const CodeReplacements& replacements);

/// The part of a prompt that holds the roster and tells how to use it; empty without a roster.
QString codeReplacementsBlock(const CodeReplacements& replacements, PromptLibrary::Prompt prompt,
                              bool includeOffenseDefense);

} // namespace ostrelle
