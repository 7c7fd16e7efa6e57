// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/DesktopAlerts.h"

#include "shell/Icon.h"
#include "shell/OwnerWindow.h"
#include "shell/Theme.h"

#include <QApplication>
#include <QCoroSignal>
#include <QEvent>
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

/// A message box with a sign in the theme's colours.
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

private:
    void showSign() { setIconPixmap(m_sign.pixmap(QSize(32, 32), devicePixelRatioF())); }

    QIcon m_sign;
};

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

void showWords(QMessageBox& box, const Alert& alert) {
    box.setTextFormat(Qt::PlainText);
    box.setText(alert.title);
    box.setInformativeText(alert.text);
    if (auto* words = box.findChild<QLabel*>(u"qt_msgbox_informativelabel"_s)) {
        words->setTextFormat(Qt::PlainText); // a path may look like a tag
    }
}

} // namespace

QCoro::Task<int> DesktopAlerts::show(Alert alert) {
    // The window below it owns the box: it may go first, when the program ends.
    const QPointer<QMessageBox> box = new AlertBox(alert.style, ownerWindow());
    box->setObjectName(u"alert"_s);
    box->setWindowTitle(u"Ostrelle Captions"_s);
    showWords(*box, alert);
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
