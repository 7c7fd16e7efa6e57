// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/toolkit/Icon.h"

#include <QFile>
#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QSvgRenderer>
#include <array>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QStringView fileName(IconName name) {
    static constexpr std::array<QStringView, 23> names = {
        u"bubble",
        u"chart",
        u"check",
        u"chevron-down",
        u"cross",
        u"eye",
        u"eye-off",
        u"help",
        u"info",
        u"key",
        u"server",
        u"settings",
        u"sport-baseball",
        u"sport-basketball",
        u"sport-cross-country",
        u"sport-football",
        u"sport-horse-racing",
        u"sport-lacrosse",
        u"sport-soccer",
        u"sport-softball",
        u"sport-track-and-field",
        u"sport-volleyball",
        u"warning",
    };
    return names.at(static_cast<size_t>(name));
}

QByteArray drawing(QStringView name) {
    QFile file(u":/icons/%1.svg"_s.arg(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Draws one SVG at any requested size. A drawing in "currentColor" takes the theme's colour.
class DrawingEngine : public QIconEngine {
public:
    explicit DrawingEngine(QByteArray svg, QColor Theme::* color = &Theme::text)
        : m_svg(std::move(svg)), m_color(color) {}

    QIconEngine* clone() const override { return new DrawingEngine(*this); }

    void paint(QPainter* painter, const QRect& rectangle, QIcon::Mode mode, QIcon::State) override {
        draw(*painter, rectangle, colorFor(mode), mode == QIcon::Disabled ? measure::disabledOpacity : 1);
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(0, 0), size), mode, state);
        return pixmap;
    }

    void draw(QPainter& painter, const QRectF& rectangle, const QColor& color, double opacity) const {
        QSvgRenderer renderer(QByteArray(m_svg).replace("currentColor", color.name().toLatin1()));
        QRectF area(QPointF(0, 0),
                    QSizeF(renderer.defaultSize()).scaled(rectangle.size(), Qt::KeepAspectRatio));
        area.moveCenter(rectangle.center());
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setOpacity(painter.opacity() * color.alphaF() * opacity);
        renderer.render(&painter, area);
        painter.restore();
    }

private:
    QColor colorFor(QIcon::Mode mode) const {
        const Theme& theme = Theme::of(QGuiApplication::palette());
        return mode == QIcon::Selected ? theme.onAccent : theme.*m_color;
    }

    QByteArray m_svg;
    QColor Theme::* m_color;
};

} // namespace

QIcon icon(IconName name, QColor Theme::* color) {
    return QIcon(new DrawingEngine(drawing(fileName(name)), color));
}

void paintIcon(QPainter& painter, const QRectF& rectangle, IconName name, const QColor& color) {
    DrawingEngine(drawing(fileName(name))).draw(painter, rectangle, color, 1);
}

IconName sportIcon(Sport sport) {
    switch (sport) {
    case Sport::baseball:
        return IconName::sportBaseball;
    case Sport::basketball:
        return IconName::sportBasketball;
    case Sport::crossCountry:
        return IconName::sportCrossCountry;
    case Sport::football:
        return IconName::sportFootball;
    case Sport::horseRacing:
        return IconName::sportHorseRacing;
    case Sport::lacrosse:
        return IconName::sportLacrosse;
    case Sport::soccer:
        return IconName::sportSoccer;
    case Sport::softball:
        return IconName::sportSoftball;
    case Sport::trackAndField:
        return IconName::sportTrackAndField;
    case Sport::volleyball:
        return IconName::sportVolleyball;
    }
    return IconName::sportSoccer;
}

QIcon applicationIcon() {
    return QIcon(new DrawingEngine(drawing(u"ostrelle-captions")));
}

} // namespace ostrelle
