// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/CommandProgram.h"
#include "cli/ProgressBar.h"

#include <QElapsedTimer>
#include <QObject>
#include <QSet>
#include <QString>

namespace ostrelle {

/// Tells on the terminal how the transfers from the server go on: a line for each file, a bar for the one
/// that is coming, and why polls fail.
class FetchReport : public QObject {
public:
    explicit FetchReport(CommandProgram& program);

    /// Erases the bar, so that other output starts on a clean line.
    void clearBar() { m_bar.clear(); }
    /// Whether all has come that should have.
    bool isComplete() const { return m_failed.isEmpty() && m_trouble.isEmpty(); }

private:
    void begin(const QString& name);
    void showProgress();
    void tell(const FetchedFile& file);
    void tellOfTrouble(const QString& failure);
    void tellOfRemarks();

    CommandProgram& m_program;
    ProgressBar m_bar;
    QString m_name;
    QElapsedTimer m_clock; ///< of the file that is coming
    qint64 m_bytesBefore = 0;
    QSet<QString> m_failed; ///< files whose last attempt failed
    QString m_trouble;      ///< of the latest poll or full download
};

} // namespace ostrelle
