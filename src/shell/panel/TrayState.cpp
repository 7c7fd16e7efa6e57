// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panel/TrayState.h"

#include "core/Text.h"
#include "shell/toolkit/Icon.h"
#include "state/PanelProgress.h"

#include <QPainter>
#include <algorithm>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// Images that are being captioned or wait for it.
qint64 imagesToGo(const StatusStore& status) {
    const QueueProgress queue = status.queue();
    return std::max(status.totalFiles() - status.processed() - status.failed(), queue.total - queue.done);
}

/// A dot with a gap around it, which keeps it apart from the icon on any background.
void paintMark(QPainter& painter, qreal size, const QColor& color) {
    const qreal diameter = size * 0.44;
    const qreal gap = size * 0.07;
    const QRectF dot(size - diameter, size - diameter, diameter, diameter);
    painter.setPen(Qt::NoPen);
    painter.setCompositionMode(QPainter::CompositionMode_Clear);
    painter.drawEllipse(dot.adjusted(-gap, -gap, gap, gap));
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.setBrush(color);
    painter.drawEllipse(dot);
}

/// Needs attention: apart from the others by its shape, too.
void paintWarning(QPainter& painter, qreal size, const QColor& color) {
    const QPointF top(size * 0.72, size * 0.46);
    const QPolygonF triangle{top, QPointF(size, size), QPointF(size * 0.44, size)};
    painter.setCompositionMode(QPainter::CompositionMode_Clear);
    painter.setPen(QPen(Qt::black, size * 0.14, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolygon(triangle);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawPolygon(triangle);
    painter.setBrush(QColor(0x40, 0x28, 0x00));
    painter.drawRect(QRectF(top.x() - size * 0.03, size * 0.64, size * 0.06, size * 0.17));
    painter.drawRect(QRectF(top.x() - size * 0.03, size * 0.86, size * 0.06, size * 0.06));
}

QPixmap trayPixmap(TrayState::Kind kind, int size) {
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(kind == TrayState::Kind::off ? 0.45 : 1);
    applicationIcon().paint(&painter, pixmap.rect());
    painter.setOpacity(1);
    switch (kind) {
    case TrayState::Kind::off:
        break;
    case TrayState::Kind::watching:
        paintMark(painter, size, QColor(0x2f, 0xb3, 0x5a));
        break;
    case TrayState::Kind::captioning:
        paintMark(painter, size, QColor(0xff, 0xd1, 0x66));
        break;
    case TrayState::Kind::needsAttention:
        paintWarning(painter, size, QColor(0xff, 0xa0, 0x1c));
        break;
    }
    return pixmap;
}

} // namespace

TrayState trayState(bool isAutoModeOn, const StatusStore& status, const QList<Problem>& problems) {
    using Kind = TrayState::Kind;
    if (!problems.isEmpty()) {
        return {Kind::needsAttention, problems.first().words};
    }
    if (hasWork(status)) {
        const qint64 count = std::max<qint64>(imagesToGo(status), 1);
        const QString images = u"%1 image%2"_s.arg(count).arg(plural(count));
        return {Kind::captioning,
                (status.isPaused() ? u"Paused with %1 to go"_s : u"Captioning %1"_s).arg(images)};
    }
    if (status.ftpIsDownloading()) {
        return {Kind::captioning, u"Downloading"_s};
    }
    return isAutoModeOn ? TrayState{Kind::watching, u"Watching for new images"_s}
                        : TrayState{Kind::off, u"Auto mode is off"_s};
}

QIcon trayIcon(TrayState::Kind kind) {
    QIcon icon;
    for (const int size : {16, 22, 24, 32, 44, 48, 64}) {
        icon.addPixmap(trayPixmap(kind, size));
    }
    return icon;
}

} // namespace ostrelle
