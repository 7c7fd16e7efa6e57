// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/desktop/AutostartEntry.h"

#include "core/Attempt.h"
#include "platform/FileError.h"
#include "platform/Files.h"
#include "product/AppFolders.h"

#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <cstdio>

namespace ostrelle {

using namespace Qt::StringLiterals;

QString AutostartEntry::path() const {
    return m_paths.config + u"/autostart/"_s + applicationIdentifier + u".desktop"_s;
}

bool AutostartEntry::isOn() const {
    constexpr qint64 largest = qint64{64} * 1024;
    const auto entry = attemptNow([&] { return readFile(path(), largest); });
    return entry && !entry->contains("\nHidden=true") &&
           !entry->contains("\nX-GNOME-Autostart-enabled=false");
}

void AutostartEntry::setOn(bool isOn) const {
    if (isOn) {
        makeFolder(QFileInfo(path()).path());
        replaceFile(path(),
                    u"[Desktop Entry]\n"
                    "Type=Application\n"
                    "Name=Ostrelle Captions\n"
                    "Icon=%1\n"
                    "Exec=%2 --hidden\n"_s.arg(applicationIdentifier, desktopEntryWord(m_paths.program))
                        .toUtf8());
    } else if (::remove(QFile::encodeName(path()).constData()) != 0 && errno != ENOENT) {
        throw FileError(u"remove"_s, path(), errno);
    }
}

} // namespace ostrelle
