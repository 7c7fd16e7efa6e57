// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/toolkit/Illustration.h"

#include "shell/toolkit/Theme.h"

#include <QFile>
#include <QPainter>
#include <QSvgRenderer>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QByteArray tinted(QByteArray drawing, const Theme& theme) {
    static constexpr QColor Theme::* colors[] = {&Theme::card,  &Theme::line,  &Theme::text,   &Theme::dim,
                                                 &Theme::field, &Theme::track, &Theme::accent, &Theme::good};
    for (const auto color : colors) {
        drawing.replace((Theme::light().*color).name().toLatin1(), (theme.*color).name().toLatin1());
    }
    return drawing;
}

} // namespace

Illustration::Illustration(const QString& path, QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    QFile file(path);
    if (file.open(QIODevice::ReadOnly)) {
        m_drawing = file.readAll();
        const QSvgRenderer renderer(m_drawing);
        m_size = renderer.isValid() ? renderer.defaultSize() : QSize();
    }
}

Illustration* Illustration::named(const QString& name) {
    return new Illustration(u":/illustrations/%1.svg"_s.arg(name));
}

void Illustration::paintEvent(QPaintEvent*) {
    if (isMissing()) {
        return;
    }
    QSvgRenderer renderer(tinted(m_drawing, Theme::of(*this)));
    QRectF area(QPointF(0, 0), QSizeF(m_size).scaled(size(), Qt::KeepAspectRatio));
    area.moveCenter(QRectF(rect()).center());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    renderer.render(&painter, area);
}

} // namespace ostrelle
