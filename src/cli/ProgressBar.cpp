// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/ProgressBar.h"

#include "core/Text.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

qsizetype columnsOf(std::FILE* stream) {
    winsize size{};
    constexpr qsizetype usualWidth = 80;
    return ::ioctl(::fileno(stream), TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : usualWidth;
}

} // namespace

QString progressLine(double fraction, const QString& label, qsizetype columns) {
    constexpr qsizetype width = 20;
    const auto filled = static_cast<qsizetype>(std::clamp(fraction, 0.0, 1.0) * width);
    const QString bar = QString(filled, u'#') + QString(width - filled, u'-');
    return firstCharacters(u"[%1]  %2"_s.arg(bar, label), columns - 1);
}

ProgressBar::ProgressBar(std::FILE* stream, bool isWanted)
    : m_stream(stream), m_isEnabled(isWanted && ::isatty(::fileno(stream)) == 1) {}

void ProgressBar::show(qsizetype done, qsizetype steps, const QString& label) {
    if (steps >= 2) {
        show(static_cast<double>(done) / static_cast<double>(steps),
             u"%1/%2  %3"_s.arg(QString::number(done), QString::number(steps), label));
    }
}

void ProgressBar::show(double fraction, const QString& label) {
    if (!m_isEnabled) {
        return;
    }
    clear();
    const QByteArray line = progressLine(fraction, label, columnsOf(m_stream)).toUtf8();
    std::fputs(line.constData(), m_stream);
    std::fflush(m_stream);
    m_isDrawn = true;
}

void ProgressBar::clear() {
    if (m_isDrawn) {
        std::fputs("\r\x1B[K", m_stream); // to the margin, then erase to the end of the line (ECMA-48, EL)
        std::fflush(m_stream);
        m_isDrawn = false;
    }
}

} // namespace ostrelle
