// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCheckBox>
#include <QVariantAnimation>
#include <functional>

namespace ostrelle {

/// A toggle whose knob slides. To screen readers and in its signals it is a check box: `clicked` comes only
/// from the user, `toggled` from anything.
class Switch : public QCheckBox {
    Q_OBJECT

public:
    /// Called before the user's click turns the switch on; false leaves it off, and it never appears on. Not
    /// called for turning off or by setChecked().
    using Guard = std::function<bool()>;

    explicit Switch(QWidget* parent = nullptr);

    void setGuard(Guard guard);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void nextCheckState() override;
    bool hitButton(const QPoint& position) const override;
    void paintEvent(QPaintEvent* event) override;

private:
    void slide(bool on);

    Guard m_guard;
    QVariantAnimation m_knob{this}; // 0 is off, 1 is on
};

} // namespace ostrelle
