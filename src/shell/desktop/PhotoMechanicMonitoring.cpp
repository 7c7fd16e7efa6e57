// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/desktop/PhotoMechanicMonitoring.h"

#include <chrono>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

bool isPhotoMechanic(const QString& name) {
    return name.contains(u"Photo Mechanic") || name.contains(u"PhotoMechanic");
}

PhotoMechanicMonitoring::PhotoMechanicMonitoring(LaunchPaths paths, const SettingsStore& settings,
                                                 CommandRunner& commands, Workspace& workspace,
                                                 std::function<void()> showWindow, Clock& clock,
                                                 PlainLog& log)
    : m_settings(settings)
    , m_workspace(workspace)
    , m_showWindow(std::move(showWindow))
    , m_clock(clock)
    , m_log(log)
    , m_agent(std::move(paths), commands, clock, log)
    , m_tasks([&log](const QString& words) {
        log.print(u"[AppDelegate] The launch agent failed: "_s + words);
    }) {}

void PhotoMechanicMonitoring::setupPhotoMechanicMonitoring() {
    m_log.print(u"[AppDelegate] setupPhotoMechanicMonitoring() called"_s);
    const bool isOn = m_settings.launchWithPhotoMechanic();
    m_log.print(u"[AppDelegate] Photo Mechanic auto-launch setting: "_s +
                (isOn ? u"ENABLED"_s : u"DISABLED"_s));
    m_isWanted = true;
    if (!m_isAtWork) {
        m_tasks.spawn(followSetting());
    }
    if (!isOn) {
        m_photoMechanicObserver.reset();
        m_log.print(u"[AppDelegate] Photo Mechanic monitoring disabled"_s);
        return;
    }
    if (!m_photoMechanicObserver) {
        m_photoMechanicObserver = std::make_unique<StartedPrograms>(m_clock, &isPhotoMechanic);
        connect(m_photoMechanicObserver.get(), &StartedPrograms::started, this, [this] {
            m_log.print(u"[AppDelegate] Photo Mechanic detected - activating Ostrelle Captions"_s);
            m_showWindow();
            m_workspace.bringToFront();
        });
    }
    m_log.print(u"[AppDelegate] Photo Mechanic monitoring enabled"_s);
}

QCoro::Task<> PhotoMechanicMonitoring::followSetting() {
    m_isAtWork = true;
    while (std::exchange(m_isWanted, false)) {
        if (m_settings.launchWithPhotoMechanic()) {
            m_log.print(u"[AppDelegate] Toggle is ON - Installing Launch Agent..."_s);
            co_await m_agent.install();
        } else {
            m_log.print(u"[AppDelegate] Toggle is OFF - Uninstalling Launch Agent..."_s);
            co_await m_agent.uninstall();
        }
    }
    m_isAtWork = false;
}

void PhotoMechanicMonitoring::stop() {
    m_photoMechanicObserver.reset();
    // What is under way gets a moment, so that a switch turned just before the end is not left half-way.
    constexpr std::chrono::seconds patience(3);
    m_patience = m_clock.after(patience, [this] { m_agent.hurry(); });
}

QCoro::Task<> PhotoMechanicMonitoring::finished() const {
    co_await m_tasks.finished();
}

} // namespace ostrelle
