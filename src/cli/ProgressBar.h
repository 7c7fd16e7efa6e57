// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <cstdio>

namespace ostrelle {

/// A line that redraws itself on a terminal, and is absent elsewhere.
class ProgressBar {
public:
    /// Draws on the stream if that is a terminal and the bar is wanted.
    ProgressBar(std::FILE* stream, bool isWanted);
    ~ProgressBar() { clear(); }
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// Shows how many steps are done and what is being done, if there is more than one step.
    void show(qsizetype done, qsizetype steps, const QString& label);
    /// Shows a fraction from 0 to 1.
    void show(double fraction, const QString& label);
    /// Erases the line, so that other output starts on a clean one.
    void clear();

private:
    std::FILE* m_stream;
    bool m_isDrawn = false;
    bool m_isEnabled;
};

/// "[######----]  label", at most `columns` wide.
QString progressLine(double fraction, const QString& label, qsizetype columns);

} // namespace ostrelle
