// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>

class QApplication;
class QLabel;
class QWidget;

namespace ostrelle {

/// The colours of the windows, by what they are for.
struct Theme {
    QColor ground;
    QColor card;
    QColor line;
    QColor text;
    QColor dim;
    QColor field;
    QColor track; ///< what a switch or a bar runs in
    QColor accent;
    QColor onAccent;
    QColor good;
    QColor missing;
    QColor missingGround; ///< behind a notice about something that is missing
    QColor destroying;

    static const Theme& light();
    static const Theme& dark();

    /// The theme that goes with a desktop's palette, told by the lightness of its window colour.
    static const Theme& of(const QPalette& palette);

    /// The theme that a widget is shown in. It asks when it paints, so that nobody has to hand it one.
    static const Theme& of(const QWidget& widget);

    QPalette palette() const;
};

/// Which theme an application shows. `desktop` goes by the lightness of the platform's own palette.
enum class ThemeChoice { desktop, light, dark };

/// Gives all widgets of the application the theme's colours and shapes; those that are shown change at once.
void applyTheme(QApplication& application, ThemeChoice choice = ThemeChoice::desktop);

/// The three sizes of type. `text` is the desktop's own; the others keep their proportion to it (22/13,
/// 11/13).
enum class TypeSize { title, text, small };

/// The application's font in this size.
QFont typeFont(TypeSize size, QFont::Weight weight = QFont::Normal);

/// A width that was drawn for type of 13 pixels, for the desktop's own: windows and columns of words grow
/// with it. Never below the width given.
int widthForType(int pixels);

/// Whether words are what is to be read, or what stands beside it in grey.
enum class TextTone { plain, dim };

/// A label that wraps its words, in the type and tone given. The caller places it in a layout.
QLabel* makeLabel(const QString& words, TypeSize size = TypeSize::text, TextTone tone = TextTone::plain);

/// Measures in device-independent pixels, shared by all views.
namespace measure {
inline constexpr int cardRadius = 10;
inline constexpr int controlRadius = 7;
inline constexpr int rowHeight = 38;
inline constexpr int cardPadding = 12;  ///< left and right inside a card
inline constexpr int windowMargin = 14; ///< left and right around the cards
inline constexpr int cardSpacing = 12;  ///< between one card and the next group's name
inline constexpr int controlSpacing = 8;
inline constexpr int focusRing = 2;
inline constexpr int iconSize = 18;
inline constexpr double disabledOpacity = 0.5; ///< still to be seen, but not to be read first
} // namespace measure

} // namespace ostrelle
