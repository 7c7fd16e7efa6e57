// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/toolkit/Theme.h"

#include <QApplication>
#include <QFile>
#include <QFontInfo>
#include <QLabel>
#include <QStyleFactory>
#include <algorithm>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

Contrast shownContrast = Contrast::usual; ///< of the application, see applyTheme()

const Theme& themeFor(bool isDark) {
    if (shownContrast == Contrast::high) {
        return isDark ? Theme::darkHighContrast() : Theme::lightHighContrast();
    }
    return isDark ? Theme::dark() : Theme::light();
}

bool isDark(const QColor& color) {
    return color.lightness() < 128;
}

QColor mixed(const QColor& from, const QColor& to, double share) {
    const auto part = [share](int a, int b) { return qRound(a + (b - a) * share); };
    return {part(from.red(), to.red()), part(from.green(), to.green()), part(from.blue(), to.blue())};
}

/// The application's style sheet with its "@name"s replaced by the theme's colours.
QString styleSheet(const Theme& theme) {
    QFile file(u":/style/widgets.qss"_s);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    QString sheet = QString::fromUtf8(file.readAll());
    const std::pair<QStringView, QColor> colors[] = {
        {u"@card;", theme.card},
        {u"@line;", theme.line},
        {u"@text;", theme.text},
        {u"@dim;", theme.dim},
        {u"@field;", theme.field},
        {u"@fieldHover;", mixed(theme.field, theme.text, 0.05)},
        {u"@fieldPressed;", mixed(theme.field, theme.text, 0.1)},
        {u"@accent;", theme.accent},
        {u"@accentHover;", mixed(theme.accent, theme.text, 0.12)},
        {u"@accentPressed;", mixed(theme.accent, theme.text, 0.24)},
        {u"@accentDisabled;", mixed(theme.card, theme.accent, measure::disabledOpacity)},
        {u"@onAccent;", theme.onAccent},
        {u"@onAccentDisabled;", mixed(theme.accent, theme.onAccent, 0.8)},
        {u"@textDisabled;", mixed(theme.card, theme.text, measure::disabledOpacity)},
        {u"@lineDisabled;", mixed(theme.card, theme.line, 0.7)},
        {u"@destroying;", theme.destroying},
        {u"@destroyingDisabled;", mixed(theme.card, theme.destroying, measure::disabledOpacity)},
        {u"@track;", theme.track},
        {u"@handle;", mixed(theme.track, theme.dim, 0.4)},
    };
    for (const auto& [name, color] : colors) {
        sheet.replace(name.toString(), color.name() + u';');
    }
    return sheet;
}

/// The theme of the platform's own palette, which our own hides.
const Theme& desktopTheme() {
    QApplication::setPalette(QPalette());
    return Theme::of(QApplication::palette());
}

const Theme& chosenTheme(ThemeChoice choice) {
    switch (choice) {
    case ThemeChoice::light:
        return themeFor(false);
    case ThemeChoice::dark:
        return themeFor(true);
    case ThemeChoice::desktop:
        break;
    }
    return desktopTheme();
}

double proportion(TypeSize size) {
    switch (size) {
    case TypeSize::title:
        return 22.0 / 13;
    case TypeSize::small:
        return 11.0 / 13;
    case TypeSize::text:
        break;
    }
    return 1;
}

} // namespace

const Theme& Theme::light() {
    static const Theme theme{.ground{0xf4, 0xf5, 0xf7},
                             .card{0xff, 0xff, 0xff},
                             .line{0xe2, 0xe5, 0xea},
                             .text{0x1b, 0x1f, 0x24},
                             .dim{0x65, 0x6d, 0x78},
                             .field{0xf7, 0xf8, 0xfa},
                             .track{0xdf, 0xe3, 0xe8},
                             .accent{0x25, 0x63, 0xeb},
                             .onAccent{0xff, 0xff, 0xff},
                             .good{0x15, 0x80, 0x3d},
                             .missing{0xb4, 0x53, 0x09},
                             .missingGround{0xff, 0xf7, 0xe8},
                             .destroying{0xc0, 0x26, 0x36}};
    return theme;
}

const Theme& Theme::dark() {
    static const Theme theme{.ground{0x15, 0x17, 0x1b},
                             .card{0x1e, 0x21, 0x26},
                             .line{0x2e, 0x33, 0x3a},
                             .text{0xe9, 0xeb, 0xee},
                             .dim{0x99, 0xa1, 0xac},
                             .field{0x26, 0x2a, 0x31},
                             .track{0x34, 0x3a, 0x43},
                             .accent{0x5b, 0x93, 0xff},
                             .onAccent{0x0e, 0x11, 0x16},
                             .good{0x4c, 0xc3, 0x8a},
                             .missing{0xf0, 0xb2, 0x4a},
                             .missingGround{0x2c, 0x25, 0x19},
                             .destroying{0xff, 0x7a, 0x85}};
    return theme;
}

const Theme& Theme::lightHighContrast() {
    static const Theme theme = [] {
        Theme high = light();
        high.line = QColor(0x70, 0x78, 0x84);
        high.track = QColor(0x70, 0x78, 0x84);
        high.text = QColor(0x00, 0x00, 0x00);
        high.dim = QColor(0x3d, 0x44, 0x4d);
        high.field = high.card;
        high.accent = QColor(0x0b, 0x3f, 0xb8);
        high.good = QColor(0x0b, 0x52, 0x27);
        high.missing = QColor(0x7a, 0x36, 0x04);
        high.destroying = QColor(0x8f, 0x15, 0x22);
        return high;
    }();
    return theme;
}

const Theme& Theme::darkHighContrast() {
    static const Theme theme = [] {
        Theme high = dark();
        high.line = QColor(0x8b, 0x93, 0x9f);
        high.track = QColor(0x7d, 0x86, 0x93);
        high.text = QColor(0xff, 0xff, 0xff);
        high.dim = QColor(0xc3, 0xc9, 0xd1);
        high.field = high.card;
        high.accent = QColor(0x9c, 0xbf, 0xff);
        return high;
    }();
    return theme;
}

const Theme& Theme::of(const QPalette& palette) {
    return themeFor(isDark(palette.color(QPalette::Active, QPalette::Window)));
}

const Theme& Theme::of(const QWidget& widget) {
    // Not the window colour: a style sheet that makes a widget's background transparent turns it black.
    return themeFor(isDark(widget.palette().color(QPalette::Active, QPalette::AlternateBase)));
}

QPalette Theme::palette() const {
    QPalette palette(text, field, card, line, track, text, destroying, field, ground);
    palette.setColor(QPalette::AlternateBase, card);
    palette.setColor(QPalette::PlaceholderText, dim);
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::Highlight, accent);
    palette.setColor(QPalette::HighlightedText, onAccent);
    palette.setColor(QPalette::Link, accent);
    palette.setColor(QPalette::LinkVisited, accent);
    palette.setColor(QPalette::ToolTipBase, card);
    palette.setColor(QPalette::ToolTipText, text);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, mixed(card, text, measure::disabledOpacity));
    }
    palette.setColor(QPalette::Disabled, QPalette::PlaceholderText,
                     mixed(card, dim, measure::disabledOpacity));
    return palette;
}

void applyTheme(QApplication& application, ThemeChoice choice, Contrast contrast) {
    shownContrast = contrast;
    const Theme& theme = chosenTheme(choice);
    QApplication::setStyle(QStyleFactory::create(u"Fusion"_s));
    QApplication::setPalette(theme.palette());
    application.setStyleSheet(styleSheet(theme));
}

QFont typeFont(TypeSize size, QFont::Weight weight) {
    QFont font = QApplication::font();
    if (font.pixelSize() > 0) {
        font.setPixelSize(qRound(font.pixelSize() * proportion(size)));
    } else {
        font.setPointSizeF(font.pointSizeF() * proportion(size));
    }
    font.setWeight(weight);
    return font;
}

int widthForType(int pixels) {
    const double drawnFor = 13;
    return qRound(pixels * std::max(1.0, QFontInfo(QApplication::font()).pixelSize() / drawnFor));
}

QLabel* makeLabel(const QString& words, TypeSize size, TextTone tone) {
    auto* label = new QLabel(words);
    label->setTextFormat(Qt::PlainText);
    label->setFont(typeFont(size, size == TypeSize::title ? QFont::DemiBold : QFont::Normal));
    label->setWordWrap(true);
    if (tone == TextTone::dim) {
        label->setForegroundRole(QPalette::PlaceholderText);
    }
    return label;
}

} // namespace ostrelle
