// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/ConsoleLog.h"

#include <QByteArray>

namespace ostrelle {

void ConsoleLog::print(const QString& line) {
    const QByteArray bytes = line.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), m_stream);
    std::fflush(m_stream);
}

void ConsoleLog::printAll(const QStringList& lines) {
    if (!lines.isEmpty()) {
        print(lines.join(u'\n'));
    }
}

} // namespace ostrelle
