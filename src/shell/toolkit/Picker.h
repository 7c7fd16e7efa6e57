// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QComboBox>

namespace ostrelle {

/// A choice of many. Unlike a bare combo box it lets the wheel scroll the page that it stands on: nobody
/// changes the sport by scrolling past it.
class Picker : public QComboBox {
    Q_OBJECT

public:
    explicit Picker(QWidget* parent = nullptr);

    void showPopup() override;

protected:
    void wheelEvent(QWheelEvent* event) override;
};

} // namespace ostrelle
