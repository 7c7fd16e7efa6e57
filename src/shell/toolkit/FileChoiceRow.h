// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/toolkit/SettingRow.h"
#include "shell/toolkit/StatusMark.h"

#include <QString>
#include <optional>

namespace ostrelle {

class ActionButton;
class ElidedLabel;

/// A folder or file of the settings: its name, and the button that chooses another one.
class FileChoiceRow : public SettingRow {
    Q_OBJECT

public:
    /// The value is named by the object name, the button "<objectName>Choose".
    FileChoiceRow(const QString& name, const QString& objectName, QWidget* parent = nullptr);

    /// Shows the last part of the path, "None" without one. The whole path is in the tooltip.
    void setPath(const std::optional<QString>& path);

    /// Small words below, in the colour of the tone; none when they are empty.
    void setNote(const QString& words, StatusTone tone = StatusTone::plain);

    /// Adds a round "i" that explains the choice; the tab key reaches it before the button.
    void explain(const InfoText& text);

Q_SIGNALS:
    /// The user wants to choose.
    void choosing();

private:
    FileChoiceRow(const QString& name, ElidedLabel* value, QWidget* parent);

    ElidedLabel* m_value;
    ActionButton* m_choose;
    StatusMark* m_note = nullptr; ///< none before there are words for it
};

} // namespace ostrelle
