// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>

class QApplication;
class QLabel;
class QWidget;

namespace ostrelle {

/// The colours of the windows, by purpose.
struct Theme {
    QColor ground;
    QColor card;
    QColor line;
    QColor text;
    QColor dim;
    QColor field;
    QColor track; ///< the groove of a switch or a bar
    QColor accent;
    QColor onAccent;
    QColor good;
    QColor missing;
    QColor missingGround; ///< of a notice about something missing
    QColor destroying;

    static const Theme& light();
    static const Theme& dark();
    /// With outlines and grooves that stand out from card and ground by 3 to 1, and grey words by 7 to 1.
    static const Theme& lightHighContrast();
    static const Theme& darkHighContrast();

    /// The theme that matches a desktop's palette, by the lightness of its window colour.
    static const Theme& of(const QPalette& palette);

    /// The theme a widget is shown in. Widgets ask when they paint, so that nobody has to pass it along.
    static const Theme& of(const QWidget& widget);

    QPalette palette() const;
};

/// The theme an application shows. `desktop` follows the lightness of the platform's own palette.
enum class ThemeChoice { desktop, light, dark };

enum class Contrast { usual, high };

/// Gives all widgets of the application the theme's colours and shapes; visible ones change at once.
void applyTheme(QApplication& application, ThemeChoice choice = ThemeChoice::desktop,
                Contrast contrast = Contrast::usual);

/// The three type sizes. `text` is the desktop's own; the others keep their ratio to it (22/13, 11/13).
enum class TypeSize { title, text, small };

/// The application's font in this size.
QFont typeFont(TypeSize size, QFont::Weight weight = QFont::Normal);

/// Scales a width designed for 13-pixel type to the desktop's own type, so that windows and columns of words
/// grow with it. Never below the width given.
int widthForType(int pixels);

/// Whether words are the main text, or a grey note beside it.
enum class TextTone { plain, dim };

/// A label that wraps its words, in the given type and tone. The caller puts it in a layout.
QLabel* makeLabel(const QString& words, TypeSize size = TypeSize::text, TextTone tone = TextTone::plain);

/// Sizes in device-independent pixels, shared by all views.
namespace measure {
inline constexpr int cardRadius = 10;
inline constexpr int controlRadius = 7;
inline constexpr int rowHeight = 38;
inline constexpr int cardPadding = 12;   ///< left and right inside a card
inline constexpr int widestColumn = 720; ///< of controls; a wider window has more margin
inline constexpr int windowMargin = 14;  ///< left and right around the cards
inline constexpr int cardSpacing = 12;   ///< between a card and the next group's name
inline constexpr int controlSpacing = 8;
inline constexpr int focusRing = 2;
inline constexpr int iconSize = 18;
inline constexpr double disabledOpacity = 0.5; ///< still visible, but not the first thing read
} // namespace measure

} // namespace ostrelle
