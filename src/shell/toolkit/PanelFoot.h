// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class QVBoxLayout;

namespace ostrelle {

/// The part of the main panel that does not scroll.
class PanelFoot : public QWidget {
    Q_OBJECT

public:
    explicit PanelFoot(QWidget* parent = nullptr);

    /// Adds a row below the others and owns it.
    void addRow(QWidget* row);
    /// The same for a row with its own side padding, such as a SettingRow.
    void addBareRow(QWidget* row);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void setMargins(int width);

    QVBoxLayout* m_rows;
};

} // namespace ostrelle
