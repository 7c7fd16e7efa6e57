// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/DesktopAlerts.h"

#include <QApplication>
#include <QCoroSignal>
#include <QMessageBox>
#include <QPushButton>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// Escape must not do what was only asked about.
qsizetype escapeIndex(const QStringList& words) {
    const qsizetype cancel = words.indexOf(u"Cancel"_s);
    return cancel < 0 ? words.size() - 1 : cancel;
}

QList<QPushButton*> addButtons(QMessageBox& box, const QStringList& words) {
    QList<QPushButton*> buttons;
    for (const QString& text : words) {
        buttons.append(box.addButton(text, QMessageBox::ActionRole));
    }
    if (!buttons.isEmpty()) {
        box.setDefaultButton(buttons.first());
        box.setEscapeButton(buttons[escapeIndex(words)]);
    }
    return buttons;
}

} // namespace

QCoro::Task<int> DesktopAlerts::show(Alert alert) {
    QMessageBox box(QApplication::activeWindow());
    box.setObjectName(u"alert"_s);
    box.setWindowTitle(QApplication::applicationDisplayName());
    box.setIcon(alert.style == Alert::Style::warning ? QMessageBox::Warning : QMessageBox::Information);
    box.setText(alert.title);
    box.setInformativeText(alert.text);
    const QList<QPushButton*> buttons = addButtons(box, alert.buttons);
    box.open();
    co_await qCoro(&box, &QMessageBox::finished);
    for (qsizetype index = 0; index < buttons.size(); ++index) {
        if (box.clickedButton() == buttons[index]) {
            co_return static_cast<int>(index);
        }
    }
    co_return static_cast<int>(escapeIndex(alert.buttons));
}

} // namespace ostrelle
