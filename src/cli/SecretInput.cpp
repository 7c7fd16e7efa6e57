// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/SecretInput.h"

#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>

namespace ostrelle {

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

} // namespace

QString readSecret(std::FILE* input) {
    constexpr std::size_t longestLine = 4096;
    const HiddenInput hidden(::fileno(input));
    std::array<char, longestLine> line{};
    const bool isRead = std::fgets(line.data(), static_cast<int>(line.size()), input) != nullptr;
    QString secret = isRead ? QString::fromUtf8(line.data()) : QString();
    while (secret.endsWith(u'\n') || secret.endsWith(u'\r')) {
        secret.chop(1);
    }
    const bool hasControl =
        std::ranges::any_of(secret, [](QChar c) { return c.category() == QChar::Other_Control; });
    return hasControl ? QString() : secret;
}

} // namespace ostrelle
