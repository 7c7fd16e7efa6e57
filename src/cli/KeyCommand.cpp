// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/KeyCommand.h"

#include "cli/ExitStatus.h"
#include "platform/DefaultsFile.h"
#include "platform/TaggedJson.h"
#include "product/ApiKey.h"

#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// Turns the terminal's echo off for the length of a scope. Ctrl+C arrives as a character meanwhile: as a
/// signal it would leave the echo off.
class HiddenInput {
public:
    explicit HiddenInput(int terminal)
        : m_terminal(terminal), m_isTerminal(::tcgetattr(terminal, &m_former) == 0) {
        if (m_isTerminal) {
            termios hidden = m_former;
            hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO | ISIG);
            ::tcsetattr(m_terminal, TCSAFLUSH, &hidden);
        }
    }
    ~HiddenInput() {
        if (m_isTerminal) {
            ::tcsetattr(m_terminal, TCSAFLUSH, &m_former);
        }
    }
    HiddenInput(const HiddenInput&) = delete;
    HiddenInput& operator=(const HiddenInput&) = delete;

private:
    int m_terminal;
    termios m_former{};
    bool m_isTerminal;
};

QString readLine(std::FILE* input) {
    constexpr std::size_t longestLine = 4096;
    std::array<char, longestLine> line{};
    const bool isRead = std::fgets(line.data(), static_cast<int>(line.size()), input) != nullptr;
    const QString key = isRead ? QString::fromUtf8(line.data()).trimmed() : QString();
    const bool hasControl =
        std::ranges::any_of(key, [](QChar c) { return c.category() == QChar::Other_Control; });
    return hasControl ? QString() : key;
}

/// Makes the change in the file at once. False when that fails; prints why.
bool changeKey(const QString& defaultsPath, const QJsonValue& key, PlainLog& errors) {
    DefaultsFile file(defaultsPath);
    QString failure;
    try {
        file.apply({{apiKeyName, key}});
    } catch (const FileError& error) {
        failure = u"ostrelle-caption: "_s + error.localizedDescription();
    }
    for (const QString& line : {file.takeNotice(), failure}) {
        if (!line.isEmpty()) {
            errors.print(line);
        }
    }
    return failure.isEmpty();
}

} // namespace

int storeKey(const QString& defaultsPath, std::FILE* input, PlainLog& output, PlainLog& errors) {
    const bool isTerminal = ::isatty(::fileno(input)) == 1;
    if (isTerminal) {
        output.print(u"API key (it is not shown):"_s);
    }
    const HiddenInput hidden(::fileno(input));
    const QString key = readLine(input);
    if (key.isEmpty()) {
        errors.print(
            u"ostrelle-caption: No key was given, and the stored one is as it was. To forget it: ostrelle-caption key --clear"_s);
        return ExitStatus::usageOrConfiguration;
    }
    if (!changeKey(defaultsPath, taggedValue(key), errors)) {
        errors.print(u"ostrelle-caption: The key could not be stored in %1."_s.arg(defaultsPath));
        return ExitStatus::fileFailed;
    }
    output.print(u"The API key is stored."_s);
    return ExitStatus::success;
}

int clearKey(const QString& defaultsPath, PlainLog& output, PlainLog& errors) {
    if (!changeKey(defaultsPath, QJsonValue::Null, errors)) {
        errors.print(u"ostrelle-caption: The key could not be removed from %1."_s.arg(defaultsPath));
        return ExitStatus::fileFailed;
    }
    output.print(u"No API key is stored now."_s);
    return ExitStatus::success;
}

} // namespace ostrelle
