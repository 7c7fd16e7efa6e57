// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/CodeReplacements.h"

#include "core/CharacterSpan.h"
#include "platform/FileError.h"
#include "platform/Files.h"

#include <QFileInfo>
#include <QSet>
#include <QStringDecoder>
#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr std::array discoveredNames = {u"code-replacements.txt", u"code_replacements.txt",
                                        u"codereplacements.txt"};

/// In bytes; about a thousand times a real roster.
constexpr qint64 largestFile = qint64{16} * 1024 * 1024;

bool endsLine(QChar character) {
    const char16_t unit = character.unicode();
    return (unit >= u'\n' && unit <= u'\r') || unit == 0x0085 || unit == 0x2028 || unit == 0x2029;
}

/// Calls the function with each line that is not empty.
template <typename Function>
void forEachLine(QStringView text, Function function) {
    for (const QChar* begin = text.begin(); begin != text.end();) {
        const QChar* end = std::find_if(begin, text.end(), endsLine);
        if (end != begin) {
            function(QStringView(begin, end));
        }
        begin = end == text.end() ? end : end + 1;
    }
}

/// The text before the line's first tab, trimmed; empty without a tab.
QStringView keyOf(QStringView line) {
    return line.first(std::max<qsizetype>(line.indexOf(u'\t'), 0)).trimmed();
}

void countEntries(QStringView text, CodeReplacements& replacements) {
    constexpr qsizetype mostSamples = 6;
    QSet<QStringView> keys;
    forEachLine(text, [&](QStringView) { ++replacements.lineCount; });
    keys.reserve(replacements.lineCount);
    forEachLine(text, [&](QStringView line) {
        const QStringView key = keyOf(line);
        const qsizetype known = keys.size();
        if (!key.isEmpty()) {
            keys.insert(key);
        }
        if (keys.size() > known && known < mostSamples) {
            replacements.sampleKeys.append(key.toString());
        }
    });
    replacements.uniqueKeyCount = keys.size();
}

/// The text's first characters, cut after the last whole line. A CR LF counts as one character and is removed
/// whole.
QStringView cutToLines(QStringView text, qsizetype most) {
    const QStringView kept = text.first(spanOfCharacters(text, most).codeUnits);
    const qsizetype lineFeed = kept.lastIndexOf(u'\n');
    if (lineFeed < 0) {
        return kept;
    }
    const QStringView lines = kept.first(lineFeed);
    return lines.endsWith(u'\r') ? lines.chopped(1) : lines;
}

} // namespace

std::optional<QString> findCodeReplacementsFile(const QString& folder) {
    for (const char16_t* name : discoveredNames) {
        QString path = folder + u'/' + QString::fromUtf16(name);
        if (QFileInfo::exists(path)) {
            return path;
        }
    }
    return std::nullopt;
}

bool hasCodeReplacementsFile(const std::optional<QString>& selectedFile, const QString& folder) {
    return selectedFile || findCodeReplacementsFile(folder);
}

std::optional<CodeReplacementsFile> resolveCodeReplacementsFile(const std::optional<QString>& selectedFile,
                                                                const std::optional<QString>& ingestFolder) {
    if (selectedFile) {
        return CodeReplacementsFile{*selectedFile, true};
    }
    const std::optional<QString> found =
        ingestFolder ? findCodeReplacementsFile(*ingestFolder) : std::nullopt;
    return found ? std::optional(CodeReplacementsFile{*found, false}) : std::nullopt;
}

CodeReplacements parseCodeReplacements(const QByteArray& bytes) {
    constexpr qsizetype previewCharacters = 500;
    QStringDecoder decoder(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
    const QString text = decoder.decode(bytes);
    CodeReplacements replacements;
    if (decoder.hasError()) {
        replacements.isUtf8 = false;
        return replacements;
    }
    if (text.isEmpty()) {
        return replacements;
    }
    countEntries(text, replacements);
    replacements.characterCount = spanOfCharacters(text).characters;
    replacements.preview = text.first(spanOfCharacters(text, previewCharacters).codeUnits);
    replacements.roster =
        replacements.isTruncated() ? cutToLines(text, CodeReplacements::mostCharacters).toString() : text;
    replacements.rosterCharacterCount = spanOfCharacters(replacements.roster).characters;
    return replacements;
}

CodeReplacements readCodeReplacements(const QString& path) {
    return parseCodeReplacements(readFile(path, largestFile));
}

QString rosterProblem(const CodeReplacements& replacements, const QString& name) {
    if (!replacements.isUtf8) {
        return u"The names in %1 will not be used: it is not UTF-8. Save it as UTF-8."_s.arg(name);
    }
    if (replacements.roster.trimmed().isEmpty()) {
        return u"There are no names in %1: it is empty."_s.arg(name);
    }
    return replacements.uniqueKeyCount > 0
               ? QString()
               : u"There may be no names in %1: no line has a number, a tab and a name."_s.arg(name);
}

QString rosterProblem(const FileError& error, const QString& name) {
    if (error.code() == EFBIG) {
        return u"The names in %1 will not be used: it is larger than %2 MB."_s.arg(name).arg(largestFile /
                                                                                             1024 / 1024);
    }
    return u"The names in %1 will not be used: it cannot be read (%2)."_s.arg(
        name, QString::fromStdString(std::generic_category().message(error.code())));
}

RosterState rosterState(const QString& path) {
    const QString name = QFileInfo(path).fileName();
    try {
        const CodeReplacements replacements = readCodeReplacements(path);
        return {.problem = rosterProblem(replacements, name), .entries = replacements.uniqueKeyCount};
    } catch (const FileError& error) {
        return {.problem = rosterProblem(error, name)};
    }
}

QList<RosterEntry> rosterEntries(const CodeReplacements& replacements) {
    QList<RosterEntry> entries;
    forEachLine(replacements.roster, [&](QStringView line) {
        if (const QStringView code = keyOf(line); !code.isEmpty()) {
            const QStringView name = line.sliced(line.indexOf(u'\t') + 1).trimmed();
            entries.append({.code = code.toString(), .name = name.toString()});
        }
    });
    return entries;
}

QStringList logLines(const CodeReplacements& replacements) {
    if (replacements.characterCount == 0) {
        return {u"[Analyzer] Code Replacements present: NO"_s};
    }
    return {u"[Analyzer] Code Replacements present: YES — %1 lines, %2 characters, %3 unique keys"_s.arg(
                QString::number(replacements.lineCount), QString::number(replacements.characterCount),
                QString::number(replacements.uniqueKeyCount)),
            u"[Analyzer] Code Replacements sample keys: "_s + replacements.sampleKeys.join(u", "_s),
            u"[Analyzer] Code Replacements preview (first 500 chars):\n"_s + replacements.preview};
}

QString truncationWarning(const CodeReplacements& replacements) {
    return u"[Analyzer] WARNING: Code Replacements file is very large (%1 chars). Truncated to %2 chars to "
           "prevent token limit issues."_s.arg(QString::number(replacements.characterCount),
                                               QString::number(replacements.rosterCharacterCount));
}

QString truncationLogLine(const CodeReplacements& replacements) {
    return u"[Analyzer] Code Replacements truncated from %1 to %2 characters"_s.arg(
        QString::number(replacements.characterCount), QString::number(replacements.rosterCharacterCount));
}

QString codeReplacementsBlock(const CodeReplacements& replacements, PromptLibrary::Prompt prompt,
                              bool includeOffenseDefense) {
    if (replacements.characterCount == 0) {
        return {};
    }
    const PromptLibrary library;
    return library.rosterHead() + (replacements.isTruncated() ? library.rosterTruncationNote() : QString()) +
           (includeOffenseDefense ? library.rosterOffenseDefense(prompt) : QString()) +
           u"\nCode Replacements:\n"_s + replacements.roster + u'\n';
}

} // namespace ostrelle
