// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/desktop/LaunchJob.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString label = u"com.tobinvasquel.Ostrelle-Captions.Helper"_s;
const QString unit = label + u".service"_s;

LaunchCommand systemctl(const QStringList& arguments) {
    return {.program = u"systemctl"_s, .arguments = QStringList{u"--user"_s, u"--quiet"_s} + arguments};
}

/// What the steps are as commands of systemctl. A unit ends its own processes, so nothing is found by a
/// pattern.
const struct {
    LaunchStep step;
    QStringList arguments;
} systemdSteps[] = {
    {LaunchStep::pkill, {u"kill"_s, u"--signal=SIGKILL"_s}}, // pkill -9 -f
    {LaunchStep::bootout, {u"disable"_s, u"--now"_s}},       // launchctl bootout
    {LaunchStep::unload, {u"stop"_s}},                       // launchctl unload
    {LaunchStep::remove, {u"reset-failed"_s}},               // launchctl remove
    {LaunchStep::bootstrap, {u"enable"_s}},                  // launchctl bootstrap
    {LaunchStep::load, {u"reenable"_s}},                     // launchctl load
    {LaunchStep::loadForced, {u"enable"_s, u"--force"_s}},   // launchctl load -w
    {LaunchStep::kickstart, {u"restart"_s}},                 // launchctl kickstart -k
    {LaunchStep::list, {u"is-enabled"_s}},                   // launchctl list
    {LaunchStep::pgrep, {u"is-active"_s}},                   // pgrep -f
};

LaunchCommand systemdCommand(LaunchStep step) {
    for (const auto& row : systemdSteps) {
        if (row.step == step) {
            return systemctl(row.arguments + QStringList(unit));
        }
    }
    return {};
}

QString escaped(const QString& text, const QString& characters, QChar escape) {
    QString result;
    for (const QChar c : text) {
        if (characters.contains(c)) {
            result += escape;
        }
        result += c;
    }
    return result;
}

} // namespace

QString unitWord(const QString& text) {
    QString word = escaped(text, u"\\\""_s, u'\\');
    word.replace(u'%', u"%%"_s).replace(u'$', u"$$"_s).replace(u'\n', u"\\n"_s);
    return u'"' + word + u'"';
}

/// Escaped once as a quoted word and once as a string of the file.
QString desktopEntryWord(const QString& text) {
    QString word = escaped(text, u"\\\"`$"_s, u'\\');
    word.replace(u'%', u"%%"_s).replace(u'\\', u"\\\\"_s).replace(u'\n', u"\\n"_s);
    return u'"' + word + u'"';
}

LaunchCommand LaunchJob::managerQuestion() {
    return systemctl({u"show-environment"_s});
}

QString LaunchJob::path() const {
    return m_manager == Manager::systemd ? m_paths.config + u"/systemd/user/"_s + unit
                                         : m_paths.config + u"/autostart/"_s + label + u".desktop"_s;
}

QByteArray LaunchJob::contents() const {
    if (m_manager == Manager::systemd) {
        return u"[Unit]\n"
               "Description=Starts Ostrelle Captions when Photo Mechanic starts\n"
               "\n"
               "[Service]\n"
               "ExecStart=%1 %2 %3\n"
               "Restart=on-failure\n"
               "RestartSec=10\n"
               "\n"
               "[Install]\n"
               "WantedBy=default.target\n"_s
                   .arg(unitWord(m_paths.helper), unitWord(m_paths.program), unitWord(path()))
                   .toUtf8();
    }
    return u"[Desktop Entry]\n"
           "Type=Application\n"
           "Name=Ostrelle Captions with Photo Mechanic\n"
           "Comment=Starts Ostrelle Captions when Photo Mechanic starts\n"
           "NoDisplay=true\n"
           "Exec=%1 %2 %3\n"_s
               .arg(desktopEntryWord(m_paths.helper), desktopEntryWord(m_paths.program),
                    desktopEntryWord(path()))
               .toUtf8();
}

LaunchCommand LaunchJob::command(LaunchStep step) const {
    if (m_manager == Manager::systemd) {
        return systemdCommand(step);
    }
    switch (step) {
    case LaunchStep::kickstart: // what the entry will do after the next login
        return {.program = u"setsid"_s, .arguments = {u"--fork"_s, m_paths.helper, m_paths.program, path()}};
    case LaunchStep::pgrep: // the helper holds its lock
        return {.program = u"sh"_s,
                .arguments = {u"-c"_s,
                              u"! flock --nonblock \"${XDG_RUNTIME_DIR:-$HOME}/%1.lock\" true"_s.arg(label)}};
    default:
        return {};
    }
}

} // namespace ostrelle
