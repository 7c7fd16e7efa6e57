// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/DesktopAlerts.h"

#include "shell/OwnerWindow.h"

#include <QApplication>
#include <QCoroSignal>
#include <QMessageBox>
#include <QPointer>
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
    // The window below it owns the box: it may go first, when the program ends.
    const QPointer<QMessageBox> box = new QMessageBox(ownerWindow());
    box->setObjectName(u"alert"_s);
    box->setWindowTitle(QApplication::applicationDisplayName());
    box->setIcon(alert.style == Alert::Style::warning ? QMessageBox::Warning : QMessageBox::Information);
    box->setText(alert.title);
    box->setInformativeText(alert.text);
    const QList<QPushButton*> buttons = addButtons(*box, alert.buttons);
    box->open();
    co_await qCoro(box.data(), &QMessageBox::finished);
    if (!box) {
        co_return static_cast<int>(escapeIndex(alert.buttons));
    }
    box->deleteLater();
    const auto* clicked = qobject_cast<QPushButton*>(box->clickedButton());
    const qsizetype index = buttons.indexOf(clicked);
    co_return static_cast<int>(index < 0 ? escapeIndex(alert.buttons) : index);
}

} // namespace ostrelle
