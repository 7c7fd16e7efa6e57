// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFrame>

namespace ostrelle {

/// A rounded frame over the window, attached to the widget that opened it. Escape or a click elsewhere closes
/// it and returns the focus; it deletes itself when closed.
class Popover : public QFrame {
    Q_OBJECT

public:
    /// Takes ownership of the content.
    Popover(QWidget* content, QWidget* anchor);

    /// Shows it below the anchor, or above where the screen ends, right edges aligned.
    void openAtAnchor();

    /// The nearest widget around the anchor that has a role for screen readers; null without one.
    static QWidget* hostOf(const Popover& popover);

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void cutToFrame();
    QPoint placeOnScreen() const;

    QWidget* m_anchor;
};

} // namespace ostrelle
