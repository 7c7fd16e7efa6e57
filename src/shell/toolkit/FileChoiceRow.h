// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/toolkit/SettingRow.h"
#include "shell/toolkit/StatusMark.h"

#include <QString>
#include <QStringList>
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

    /// Shows a link below, after the note; empty words hide it. Without one, and without a path, the last of
    /// the recent paths is offered there.
    void setLink(const QString& words);

    /// Offers paths to choose from in a menu beside the button; none hide it.
    void setRecent(const QStringList& paths);

    /// Adds a round "i" that explains the choice; it comes before the button in tab order.
    void explain(const InfoText& text);

Q_SIGNALS:
    /// The user wants to choose.
    void choosing();
    /// The user chose one of those that were offered.
    void chosen(const QString& path);
    void linkClicked();

private:
    FileChoiceRow(const QString& name, ElidedLabel* value, QWidget* parent);

    void makeSecondLine();
    void showSecondLine();

    ElidedLabel* m_value;
    ActionButton* m_choose;
    QWidget* m_secondLine = nullptr; ///< null until there is something for it
    StatusMark* m_note = nullptr;
    ActionButton* m_link = nullptr;
    ActionButton* m_recent = nullptr; ///< null until there are paths
    QString m_noteWords;
    StatusTone m_noteTone = StatusTone::plain;
    QString m_linkWords;
    QStringList m_recentPaths;
    bool m_hasPath = false;
};

} // namespace ostrelle
