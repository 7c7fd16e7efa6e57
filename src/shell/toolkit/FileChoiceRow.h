// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/toolkit/SettingRow.h"
#include "shell/toolkit/StatusMark.h"

#include <QString>
#include <optional>

namespace ostrelle {

class ActionButton;
class ElidedLabel;

/// A folder or file of the settings: its name, and a button to choose another.
class FileChoiceRow : public SettingRow {
    Q_OBJECT

public:
    /// Names the value widget `objectName` and the button "<objectName>Choose".
    FileChoiceRow(const QString& name, const QString& objectName, QWidget* parent = nullptr);

    /// Shows the last part of the path, or "None" without one. The tooltip shows the whole path.
    void setPath(const std::optional<QString>& path);

    /// Shows small words below, in the colour of the tone; empty words hide them.
    void setNote(const QString& words, StatusTone tone = StatusTone::plain);

    /// Adds a round "i" that explains the choice; it comes before the button in tab order.
    void explain(const InfoText& text);

Q_SIGNALS:
    /// The user wants to choose.
    void choosing();

private:
    FileChoiceRow(const QString& name, ElidedLabel* value, QWidget* parent);

    ElidedLabel* m_value;
    ActionButton* m_choose;
    StatusMark* m_note = nullptr; ///< null until there are words for it
};

} // namespace ostrelle
