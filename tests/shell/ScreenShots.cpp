// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/ScreenShots.h"

#include <QAbstractAnimation>
#include <QApplication>
#include <QFontDatabase>
#include <QPainter>
#include <QWidget>
#include <algorithm>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

bool isMoving(const QWidget& widget) {
    const auto animations = widget.findChildren<QAbstractAnimation*>();
    return std::any_of(animations.begin(), animations.end(), [](const QAbstractAnimation* animation) {
        return animation->state() == QAbstractAnimation::Running;
    });
}

/// Lets layouts and animations finish. Each nested layout takes one more pass.
void settle() {
    constexpr int deepestLayout = 10;
    for (int pass = 0; pass < deepestLayout; ++pass) {
        QApplication::processEvents();
    }
    const QWidgetList widgets = QApplication::topLevelWidgets();
    while (std::any_of(widgets.begin(), widgets.end(), [](QWidget* widget) { return isMoving(*widget); })) {
        QApplication::processEvents();
    }
}

} // namespace

void usePictureFont() {
    const QStringList families = QFontDatabase::families();
    for (const QString& family : {u"Inter"_s, u"Noto Sans"_s, u"DejaVu Sans"_s}) {
        if (families.contains(family)) {
            QFont font(family);
            font.setPixelSize(13);
            QApplication::setFont(font);
            return;
        }
    }
}

QPixmap screenshot(QWidget& window) {
    window.show();
    settle();
    QList<QWidget*> shown = {&window};
    QRect room = window.geometry();
    const QWidgetList others = QApplication::topLevelWidgets();
    for (QWidget* other : others) {
        if (other->isVisible() && (other->windowFlags() & Qt::Popup) == Qt::Popup) {
            shown.append(other);
            room |= other->geometry();
        }
    }
    const qreal scale = window.devicePixelRatioF();
    QPixmap picture(room.size() * scale);
    picture.setDevicePixelRatio(scale);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    for (QWidget* widget : shown) {
        painter.drawPixmap(widget->pos() - room.topLeft(), widget->grab());
    }
    return picture;
}

} // namespace ostrelle
