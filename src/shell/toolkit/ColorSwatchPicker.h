// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointer>
#include <QPushButton>
#include <QString>

namespace ostrelle {

class Popover;

/// Shows a team colour with its name; a press opens all team colours as swatches. Up and Down choose the
/// previous and next without opening it. It is as wide as the longest name needs, so that nothing moves.
class ColorSwatchPicker : public QPushButton {
    Q_OBJECT

public:
    explicit ColorSwatchPicker(QWidget* parent = nullptr);

    QString colorName() const;

    /// A name from teamColors(); an unknown name is kept as it is. Emits nothing.
    void setColorName(const QString& name);

    /// The open swatches, or null. Each is named "swatch" and its colour: "swatchBlue".
    Popover* popover() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// The user chose a colour.
    void chosen(const QString& name);

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void openSwatches();
    void choose(const QString& name);
    void step(int by);

    QString m_name;
    QPointer<Popover> m_popover;
};

} // namespace ostrelle
