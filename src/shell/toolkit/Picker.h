// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QComboBox>

namespace ostrelle {

/// A choice of many. Unlike a plain combo box, it leaves the wheel to the page, so that nobody changes the
/// sport by scrolling past it.
class Picker : public QComboBox {
    Q_OBJECT

public:
    explicit Picker(QWidget* parent = nullptr);

    void showPopup() override;

protected:
    void wheelEvent(QWheelEvent* event) override;
};

} // namespace ostrelle
