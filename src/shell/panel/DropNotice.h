// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QWidget>

namespace ostrelle {

/// Covers a window while files are dragged over it, and says what a drop would do.
class DropNotice : public QWidget {
    Q_OBJECT

public:
    explicit DropNotice(QWidget* window);

    /// Whether a drop would be taken.
    enum class Welcome { yes, no };
    void showOver(const QString& words, Welcome welcome);
    Welcome welcome() const { return m_welcome; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    QString m_words;
    Welcome m_welcome = Welcome::yes;
};

} // namespace ostrelle
