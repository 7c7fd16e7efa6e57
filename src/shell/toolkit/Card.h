// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QWidget>

class QLabel;
class QVBoxLayout;

namespace ostrelle {

/// A group of rows in a rounded frame below a small grey title. Hiding a row hides its line too.
class Card : public QWidget {
    Q_OBJECT

public:
    /// An empty title leaves only the frame.
    explicit Card(const QString& title = {}, QWidget* parent = nullptr);

    /// Adds a row below the others and owns it. Any widget will do; a SettingRow brings its own padding.
    void addRow(QWidget* row);

    /// Adds a widget with a row's padding around it and owns it; returns the row, for hiding and showing.
    QWidget* addPaddedRow(QWidget* content);

    QString title() const;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QRectF frame() const;

    QLabel* m_title;
    QVBoxLayout* m_rowLayout;
    QList<QWidget*> m_rows;
};

} // namespace ostrelle
