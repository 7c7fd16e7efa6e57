// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFrame>

namespace ostrelle {

/// A rounded frame above the window that belongs to the widget it was opened from. Escape and a click
/// elsewhere close it and give the focus back; what is closed deletes itself.
class Popover : public QFrame {
    Q_OBJECT

public:
    /// Takes ownership of the content.
    Popover(QWidget* content, QWidget* anchor);

    /// Shows it below the anchor, or above where the screen ends, its right edge at the anchor's.
    void openAtAnchor();

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    QPoint placeOnScreen() const;

    QWidget* m_anchor;
};

} // namespace ostrelle
