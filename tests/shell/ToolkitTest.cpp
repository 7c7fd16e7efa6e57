// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/TeamColor.h"
#include "shell/toolkit/Card.h"
#include "shell/toolkit/ColorSwatchPicker.h"
#include "shell/toolkit/ElidedLabel.h"
#include "shell/toolkit/Icon.h"
#include "shell/toolkit/InfoButton.h"
#include "shell/toolkit/Picker.h"
#include "shell/toolkit/Popover.h"
#include "shell/toolkit/ProgressLine.h"
#include "shell/toolkit/SecureField.h"
#include "shell/toolkit/SegmentedControl.h"
#include "shell/toolkit/SettingRow.h"
#include "shell/toolkit/Switch.h"
#include "shell/toolkit/Theme.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QImage>
#include <QSet>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <cmath>

namespace ostrelle {
namespace {

using namespace Qt::StringLiterals;

/// A window with one widget, which has the focus.
class ToolkitTest : public testing::Test {
protected:
    void show(QWidget* widget) {
        m_layout.addWidget(widget);
        m_window.show();
        m_window.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&m_window));
        widget->setFocus();
    }

    QWidget m_window;
    QVBoxLayout m_layout{&m_window};
};

TEST_F(ToolkitTest, ASwitchThatItsGuardRefusesNeverLooksOn) {
    auto* toggle = new Switch;
    show(toggle);
    QSignalSpy toggled(toggle, &Switch::toggled);
    int asked = 0;
    bool allowed = false;
    toggle->setGuard([&] {
        ++asked;
        return allowed;
    });

    QTest::mouseClick(toggle, Qt::LeftButton);
    QTest::keyClick(toggle, Qt::Key_Space);
    EXPECT_EQ(asked, 2);
    EXPECT_EQ(toggled.count(), 0);
    EXPECT_FALSE(toggle->isChecked());

    allowed = true;
    QTest::keyClick(toggle, Qt::Key_Space);
    EXPECT_TRUE(toggle->isChecked());
    allowed = false;
    QTest::keyClick(toggle, Qt::Key_Space);
    EXPECT_FALSE(toggle->isChecked()) << "switching off needs no permission";
    EXPECT_EQ(asked, 3);
}

TEST_F(ToolkitTest, AGuardMayTakeTheWindowAway) {
    auto* toggle = new Switch;
    show(toggle);
    toggle->setGuard([toggle] {
        toggle->setParent(nullptr);
        toggle->deleteLater();
        return false;
    });
    QTest::keyClick(toggle, Qt::Key_Space);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(m_window.findChild<Switch*>(), nullptr);
}

TEST_F(ToolkitTest, ArrowKeysMoveTheChoiceOfASegmentedControl) {
    auto* styles = new SegmentedControl({u"AP"_s, u"Getty"_s, u"Simple"_s}, u"style"_s);
    show(styles);
    QSignalSpy chosen(styles, &SegmentedControl::chosen);

    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Right);
    EXPECT_EQ(styles->currentIndex(), 1);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Left);
    EXPECT_EQ(styles->currentIndex(), 0);
    QTest::mouseClick(styles->findChild<QWidget*>(u"style2"_s), Qt::LeftButton);
    EXPECT_EQ(styles->currentIndex(), 2);
    EXPECT_EQ(chosen.count(), 3);

    styles->setCurrentIndex(1);
    EXPECT_EQ(chosen.count(), 3) << "a view that shows a setting must not write it back";
    styles->setCurrentIndex(7);
    EXPECT_EQ(styles->currentIndex(), 1);
}

TEST_F(ToolkitTest, AllTeamColorsCanBeChosenByKeyboard) {
    auto* picker = new ColorSwatchPicker;
    show(picker);
    picker->setColorName(u"Blue"_s);
    QSignalSpy chosen(picker, &ColorSwatchPicker::chosen);

    QTest::keyClick(picker, Qt::Key_Space);
    ASSERT_NE(picker->popover(), nullptr);
    EXPECT_EQ(picker->popover()->focusWidget()->objectName(), u"swatchBlue"_s);
    QTest::keyClick(picker->popover()->focusWidget(), Qt::Key_Right);
    EXPECT_EQ(chosen.count(), 0) << "an arrow key chooses nothing";
    QTest::keyClick(picker->popover()->focusWidget(), Qt::Key_Return);
    EXPECT_EQ(picker->colorName(), u"Navy"_s);
    EXPECT_EQ(chosen.count(), 1);

    QSet<QString> reached{picker->colorName()};
    for (int press = 0; press < 20; ++press) {
        QTest::keyClick(picker, press < 3 ? Qt::Key_Down : Qt::Key_Up);
        reached.insert(picker->colorName());
    }
    EXPECT_EQ(reached.size(), std::ssize(teamColors()));
}

TEST_F(ToolkitTest, TheSwatchPickerKeepsItsWidthAndAnUnknownName) {
    ColorSwatchPicker picker;
    const QSize size = picker.sizeHint();
    picker.setColorName(u"Crimson and Cream"_s);
    EXPECT_EQ(picker.colorName(), u"Crimson and Cream"_s);
    EXPECT_EQ(picker.sizeHint(), size);
}

TEST_F(ToolkitTest, EscapeAndAClickElsewhereCloseAnExplanation) {
    auto* button = new InfoButton({u"Why?"_s, {{u"Because."_s}, {u"• one\n• two"_s, u"When ENABLED:"_s}}});
    show(button);

    QTest::keyClick(button, Qt::Key_Space);
    ASSERT_NE(button->popover(), nullptr);
    QTest::keyClick(button->popover(), Qt::Key_Escape);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(button->popover(), nullptr);
    EXPECT_TRUE(button->hasFocus());

    QTest::mouseClick(button, Qt::LeftButton);
    ASSERT_NE(button->popover(), nullptr);
    QTest::mouseClick(button->popover(), Qt::LeftButton, {}, QPoint(-40, -40));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(button->popover(), nullptr);
}

TEST_F(ToolkitTest, WhatAnElidedLabelAsksForDoesNotDependOnItsWords) {
    ElidedLabel label(u"None"_s);
    const QSize size = label.sizeHint();
    const QSize least = label.minimumSizeHint();
    label.resize(120, 20);
    EXPECT_FALSE(label.isCut());
    label.setText(u"2025-10-26 Kentucky at Tennessee, second half and overtime"_s);
    EXPECT_TRUE(label.isCut());
    EXPECT_EQ(label.sizeHint(), size);
    EXPECT_EQ(label.minimumSizeHint(), least);
}

TEST_F(ToolkitTest, AProgressLineTakesAnyNumber) {
    ProgressLine line;
    for (const auto& [given, shown] :
         {std::pair(-1.0, 0), {0.25, 250}, {7.0, 1000}, {0.1, 100}, {std::nan(""), 0}}) {
        line.setFraction(given);
        EXPECT_EQ(line.value(), shown) << given;
    }
}

TEST_F(ToolkitTest, ASecretHidesAgainWithItsField) {
    auto* field = new SecureField(u"password"_s);
    show(field);
    auto* eye = m_window.findChild<QToolButton*>(u"passwordReveal"_s);
    ASSERT_NE(eye, nullptr);
    QTest::keyClick(eye, Qt::Key_Space);
    EXPECT_EQ(field->echoMode(), QLineEdit::Normal);
    m_window.hide();
    EXPECT_EQ(field->echoMode(), QLineEdit::Password);
}

TEST_F(ToolkitTest, TheWheelScrollsThePageNotThePicker) {
    auto* picker = new Picker;
    picker->addItems({u"Football"_s, u"Soccer"_s});
    show(picker);
    QWheelEvent down({5, 5}, picker->mapToGlobal(QPointF(5, 5)), {}, {0, -120}, {}, {}, Qt::NoScrollPhase,
                     false);
    QApplication::sendEvent(picker, &down);
    EXPECT_EQ(picker->currentIndex(), 0);
    EXPECT_FALSE(down.isAccepted());
}

TEST_F(ToolkitTest, ScreenReadersGetTheRoleAndNameOfEachControl) {
    auto* toggle = new Switch;
    toggle->setObjectName(u"audio"_s);
    auto* row = new SettingRow(u"Sound & Voice"_s, toggle);
    row->setInfo({u"Sound"_s, {{u"What is said."_s}}});
    auto* styles = new SegmentedControl({u"AP"_s, u"Getty"_s}, u"style"_s);
    auto* card = new Card(u"Group"_s);
    card->addRow(row);
    card->addRow(new SettingRow(u"Style"_s, styles));
    show(card);

    for (const auto& [name, role, spoken] :
         {std::tuple(u"audio"_s, QAccessible::CheckBox, u"Sound & Voice"_s),
          std::tuple(u"style1"_s, QAccessible::RadioButton, u"Getty"_s),
          std::tuple(u"audioInfo"_s, QAccessible::PushButton, u"About “Sound”"_s)}) {
        auto* widget = m_window.findChild<QWidget*>(name);
        ASSERT_NE(widget, nullptr) << name.toStdString();
        QAccessibleInterface* read = QAccessible::queryAccessibleInterface(widget);
        EXPECT_EQ(read->role(), role) << name.toStdString();
        EXPECT_EQ(read->text(QAccessible::Name), spoken);
    }
    EXPECT_EQ(row->objectName(), u"audioRow"_s);
    row->setName(u"Voice"_s);
    EXPECT_EQ(toggle->accessibleName(), u"Voice"_s) << "renaming a row renames its control";
}

TEST_F(ToolkitTest, EverySignIsDrawnAndNoTwoAreAlike) {
    QList<QImage> drawn;
    for (int index = 0; index <= static_cast<int>(IconName::warning); ++index) {
        const QImage image = icon(static_cast<IconName>(index)).pixmap(24, 24).toImage();
        QImage empty(image.size(), image.format());
        empty.fill(Qt::transparent);
        EXPECT_NE(image, empty) << index;
        EXPECT_FALSE(drawn.contains(image)) << index;
        drawn.append(image);
    }
}

TEST_F(ToolkitTest, AWidgetTellsItsThemeFromItsPalette) {
    QPushButton widget;
    widget.setStyleSheet(u"background: transparent"_s); // this makes its window colour black
    widget.setPalette(Theme::dark().palette());
    EXPECT_EQ(Theme::of(widget).accent, Theme::dark().accent);
    widget.setPalette(Theme::light().palette());
    EXPECT_EQ(Theme::of(widget).accent, Theme::light().accent);
}

} // namespace
} // namespace ostrelle
