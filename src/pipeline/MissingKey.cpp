// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/MissingKey.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

Alert keyAlert(const QString& title, const QString& text) {
    Alert alert;
    alert.title = title;
    alert.text = text;
    alert.buttons = QStringList{u"Open Settings"_s, u"Cancel"_s};
    return alert;
}

} // namespace

Alert missingKeyAlert() {
    return keyAlert(u"OpenAI API Key Required"_s,
                    u"Please enter your OpenAI API key in Settings to continue captioning images."_s);
}

Alert keyForFolderAlert() {
    return keyAlert(u"API Key Required"_s,
                    u"Please add your own OpenAI API key in Settings to continue using Ostrelle Captions."_s);
}

QString missingKeyMessage() {
    return u"Please add your API key in Settings."_s;
}

QCoro::Task<> askForKey(Alert alert, Alerts& alerts, AppEvents& events, CaptionProgress& progress) {
    const QString answer = co_await alerts.show(alert);
    if (answer == u"Open Settings") {
        Q_EMIT events.showSettingsWindow();
    }
    progress.showMessage(missingKeyMessage());
}

} // namespace ostrelle
