// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/toolkit/InfoButton.h"

#include <QWidget>

class QHBoxLayout;
class QLabel;
class QVBoxLayout;

namespace ostrelle {

/// One decision: its name on the left, its control on the right. The name labels the control, for screen
/// readers too. The row is named "<objectName of the control>Row".
class SettingRow : public QWidget {
    Q_OBJECT

public:
    /// Owns the control. A control that is an ElidedLabel or a line edit takes the width that the name
    /// leaves.
    SettingRow(const QString& name, QWidget* control, QWidget* parent = nullptr);

    /// Adds another control to the right of the existing ones, and owns it.
    void addControl(QWidget* control);

    /// Adds a round "i" before the controls that explains the decision, named "<objectName of the
    /// control>Info".
    InfoButton* setInfo(const InfoText& text);

    /// Adds a widget below name and control over the full width of the row: a field, or grey words.
    void setSecondLine(QWidget* widget);

    QString name() const;
    void setName(const QString& name);
    /// Alt and this letter of the name moves the focus to the control.
    void setMnemonic(QChar letter);

private:
    void showName(const QString& name);

    QChar m_mnemonic;
    QLabel* m_name;
    QWidget* m_control;
    QHBoxLayout* m_line;
    QVBoxLayout* m_lines;
    InfoButton* m_info = nullptr;
};

} // namespace ostrelle
