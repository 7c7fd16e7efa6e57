// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/toolkit/ColorSwatchPicker.h"
#include "shell/toolkit/Switch.h"
#include "state/SettingsStore.h"

#include <QLineEdit>

namespace ostrelle {

/// How a view reads, writes and follows one setting.
template <typename T>
struct SettingAccess {
    T (SettingsStore::*get)() const;
    void (SettingsStore::*set)(const T& value);
    void (SettingsStore::*changed)();
};

/// Keeps a control and a setting in step: the control shows every change, and the user's edits are set at
/// once. The settings must outlive the control.
inline void bindSetting(Switch* control, SettingsStore& settings, SettingAccess<bool> setting) {
    const auto show = [=, &settings] { control->setChecked((settings.*setting.get)()); };
    show();
    QObject::connect(&settings, setting.changed, control, show);
    QObject::connect(control, &Switch::clicked, &settings, setting.set);
}

inline void bindSetting(QLineEdit* control, SettingsStore& settings, SettingAccess<QString> setting) {
    const auto show = [=, &settings] {
        const QString text = (settings.*setting.get)();
        if (control->text() != text) { // keeps the caret where the user is typing
            control->setText(text);
        }
    };
    show();
    QObject::connect(&settings, setting.changed, control, show);
    QObject::connect(control, &QLineEdit::textEdited, &settings, setting.set);
}

inline void bindSetting(ColorSwatchPicker* control, SettingsStore& settings, SettingAccess<QString> setting) {
    const auto show = [=, &settings] { control->setColorName((settings.*setting.get)()); };
    show();
    QObject::connect(&settings, setting.changed, control, show);
    QObject::connect(control, &ColorSwatchPicker::chosen, &settings, setting.set);
}

} // namespace ostrelle
