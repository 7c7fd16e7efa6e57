// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/ScreenShots.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QFontDatabase>
#include <QPainter>
#include <QPixmap>
#include <QWidget>

namespace ostrelle {

using namespace Qt::StringLiterals;

void usePictureFont(QApplication&, int pixels) {
    const QStringList families = QFontDatabase::families();
    for (const QString& family : {u"Inter"_s, u"Noto Sans"_s, u"DejaVu Sans"_s}) {
        if (families.contains(family)) {
            QFont font(family);
            font.setPixelSize(pixels);
            QApplication::setFont(font);
            return;
        }
    }
}

bool saveScreenshot(QWidget& window, const QString& path) {
    window.show();
    QApplication::processEvents();
    QPixmap picture = window.grab();
    QPainter painter(&picture);
    for (QWidget* other : QApplication::topLevelWidgets()) {
        if (other->isVisible() && (other->windowFlags() & Qt::Popup) == Qt::Popup) {
            painter.drawPixmap(other->pos() - window.mapToGlobal(QPoint(0, 0)), other->grab());
        }
    }
    painter.end();
    QDir().mkpath(QFileInfo(path).path());
    return picture.save(path);
}

} // namespace ostrelle
