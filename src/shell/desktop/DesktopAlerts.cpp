// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/desktop/DesktopAlerts.h"

#include "shell/desktop/OwnerWindow.h"
#include "shell/toolkit/ActionButton.h"
#include "shell/toolkit/Icon.h"
#include "shell/toolkit/Theme.h"

#include <QCloseEvent>
#include <QCoroSignal>
#include <QEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QIcon signOf(Alert::Style style) {
    return style == Alert::Style::warning ? icon(IconName::warning, &Theme::missing)
                                          : icon(IconName::info, &Theme::accent);
}

/// A message box with an icon in the theme's colours.
class AlertBox : public QMessageBox {
public:
    AlertBox(Alert::Style style, QWidget* owner) : QMessageBox(owner), m_sign(signOf(style)) { showSign(); }

protected:
    void changeEvent(QEvent* event) override {
        QMessageBox::changeEvent(event);
        if (event->type() == QEvent::PaletteChange) {
            showSign();
        }
    }
    // Without an escape button, Qt lets neither Escape nor closing end a message box; here both do.
    void keyPressEvent(QKeyEvent* event) override {
        event->key() == Qt::Key_Escape&& escapeButton() == nullptr ? reject()
                                                                   : QMessageBox::keyPressEvent(event);
    }
    void closeEvent(QCloseEvent* event) override {
        escapeButton() == nullptr ? reject() : QMessageBox::closeEvent(event);
    }

private:
    void showSign() { setIconPixmap(m_sign.pixmap(QSize(32, 32), devicePixelRatioF())); }

    QIcon m_sign;
};

/// The button for Escape: "Cancel", or the only one. -1 when Escape closes the box without pressing any.
qsizetype escapeIndex(const QStringList& words) {
    return words.size() == 1 ? 0 : words.indexOf(u"Cancel"_s);
}

/// One button is the main one: the first that does something and can be undone.
QList<ActionKind> kindsOf(const Alert& alert) {
    QList<ActionKind> kinds;
    for (qsizetype index = 0; index < alert.buttons.size(); ++index) {
        const bool isMain = alert.buttons[index] != u"Cancel" && !kinds.contains(ActionKind::main);
        kinds.append(index == alert.destroyingButton ? ActionKind::destroying
                     : isMain                        ? ActionKind::main
                                                     : ActionKind::normal);
    }
    return kinds;
}

QList<QPushButton*> addButtons(QMessageBox& box, const Alert& alert) {
    QList<QPushButton*> buttons;
    const QList<ActionKind> kinds = kindsOf(alert);
    for (qsizetype index = 0; index < alert.buttons.size(); ++index) {
        auto* button = new ActionButton(alert.buttons[index], kinds[index]);
        box.addButton(button, QMessageBox::ActionRole);
        buttons.append(button);
    }
    const qsizetype escape = escapeIndex(alert.buttons);
    if (escape >= 0) {
        box.setEscapeButton(buttons[escape]);
    }
    if (!buttons.isEmpty()) {
        const bool isFirstSafe = alert.destroyingButton != 0 || escape < 0;
        box.setDefaultButton(isFirstSafe ? buttons.first() : buttons[escape]);
    }
    return buttons;
}

void showWords(QMessageBox& box, const Alert& alert) {
    box.setTextFormat(Qt::PlainText);
    box.setText(alert.title);
    box.setInformativeText(alert.text);
    if (auto* words = box.findChild<QLabel*>(u"qt_msgbox_informativelabel"_s)) {
        words->setTextFormat(Qt::PlainText); // a path may look like a tag
    }
}

} // namespace

QCoro::Task<QString> DesktopAlerts::show(Alert alert) {
    // The window below owns the box and may go first, when the program ends.
    const QPointer<QMessageBox> box = new AlertBox(alert.style, ownerWindow());
    box->setObjectName(u"alert"_s);
    box->setWindowTitle(u"Ostrelle Captions"_s);
    showWords(*box, alert);
    const QList<QPushButton*> buttons = addButtons(*box, alert);
    box->open();
    co_await qCoro(box.data(), &QMessageBox::finished);
    if (!box) {
        co_return alert.buttons.value(escapeIndex(alert.buttons));
    }
    box->deleteLater();
    const qsizetype index = buttons.indexOf(qobject_cast<QPushButton*>(box->clickedButton()));
    co_return alert.buttons.value(index < 0 ? escapeIndex(alert.buttons) : index);
}

} // namespace ostrelle
