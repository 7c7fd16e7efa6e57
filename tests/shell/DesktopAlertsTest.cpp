// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/desktop/DesktopAlerts.h"

#include "support/Await.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QTest>

namespace ostrelle {

using namespace Qt::StringLiterals;

TEST(DesktopAlerts, EscapeNeverDoesWhatWasOnlyAskedAbout) {
    const struct {
        QStringList buttons;
        std::optional<int> clicked; ///< nothing: Escape
        QString answer;
    } rows[] = {
        {{u"Cancel"_s, u"Caption All"_s}, std::nullopt, u"Cancel"_s},
        {{u"Cancel"_s, u"Caption All"_s}, 1, u"Caption All"_s},
        {{u"Clear"_s, u"Cancel"_s}, std::nullopt, u"Cancel"_s},
        {{u"OK"_s}, std::nullopt, u"OK"_s},
        {{u"Open System Preferences"_s, u"Use Watch Folder Instead"_s}, std::nullopt, u""_s},
    };
    const auto box = [] { return qobject_cast<QMessageBox*>(QApplication::activeModalWidget()); };
    DesktopAlerts alerts;
    for (const auto& row : rows) {
        QCoro::Task<QString> answer =
            alerts.show({.title = u"A question"_s, .text = {}, .buttons = row.buttons});
        waitUntil([&box] { return box() != nullptr; });
        if (row.clicked) {
            box()->buttons().at(*row.clicked)->click();
        } else {
            QTest::keyClick(box(), Qt::Key_Escape);
        }
        EXPECT_EQ(await(std::move(answer)), row.answer) << row.buttons.join(u' ').toStdString();
    }
}

} // namespace ostrelle
