// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/NotThereYet.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QCoro::Task<> show(Alerts& alerts, Alert alert) {
    co_await alerts.show(alert);
}

} // namespace

NotThereYet::NotThereYet(const AppEvents& events, const SettingsStore& settings, Alerts& alerts,
                         PlainLog& console)
    : m_settings(settings), m_alerts(alerts), m_news([&console](const QString& words) {
        console.print(u"[AppDelegate] Cannot tell what is not there yet: "_s + words);
    }) {
    connect(&events, &AppEvents::photoMechanicSettingChanged, this, &NotThereYet::tellOfPhotoMechanic);
}

void NotThereYet::tellOfPhotoMechanic() {
    if (m_settings.launchWithPhotoMechanic()) {
        tell(u"This version of Ostrelle Captions cannot start with Photo Mechanic yet. The setting is kept "
             "for the one that can."_s);
    }
}

void NotThereYet::tell(const QString& text) {
    Alert alert;
    alert.title = u"Not There Yet"_s;
    alert.text = text;
    alert.buttons = QStringList{u"OK"_s};
    m_news.spawn(show(m_alerts, alert));
}

} // namespace ostrelle
