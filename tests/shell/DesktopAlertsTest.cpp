// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/desktop/DesktopAlerts.h"

#include "support/Await.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <memory>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QMessageBox* shownBox() {
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows) {
        auto* box = qobject_cast<QMessageBox*>(window);
        if (box && box->isVisible()) {
            return box;
        }
    }
    return nullptr;
}

} // namespace

TEST(DesktopAlerts, EscapeNeverDoesWhatWasOnlyAskedAbout) {
    const struct {
        QStringList buttons;
        std::optional<int> clicked; ///< nothing: Escape
        int answer;
    } rows[] = {
        {{u"Cancel"_s, u"Caption All"_s}, std::nullopt, 0},
        {{u"Cancel"_s, u"Caption All"_s}, 1, 1},
        {{u"Clear"_s, u"Cancel"_s}, std::nullopt, 1},
        {{u"Clear"_s, u"Cancel"_s}, 0, 0},
        {{u"OK"_s}, std::nullopt, 0},
        {{u"Open System Preferences"_s, u"Use Watch Folder Instead"_s}, std::nullopt, -1},
        {{u"Open System Preferences"_s, u"Use Watch Folder Instead"_s}, 1, 1},
    };
    DesktopAlerts alerts;
    for (const auto& row : rows) {
        Alert alert;
        alert.title = u"A question"_s;
        alert.buttons = row.buttons;
        QCoro::Task<int> answer = alerts.show(alert);
        waitUntil([] { return shownBox() != nullptr; });
        if (row.clicked) {
            const auto buttons = shownBox()->buttons();
            for (QAbstractButton* button : buttons) {
                if (button->text() == row.buttons[*row.clicked]) {
                    button->click();
                }
            }
        } else {
            QTest::keyClick(shownBox(), Qt::Key_Escape);
        }
        EXPECT_EQ(await(std::move(answer)), row.answer) << row.buttons.join(u' ').toStdString();
    }
}

} // namespace ostrelle
