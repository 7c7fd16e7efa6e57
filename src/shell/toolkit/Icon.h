// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Sport.h"
#include "shell/toolkit/Theme.h"

#include <QColor>
#include <QIcon>

class QPainter;

namespace ostrelle {

/// The program's icons, each a drawing of our own in resources/icons.
enum class IconName {
    bubble,
    chart,
    check,
    chevronDown,
    cross,
    eye,
    eyeOff,
    help,
    info,
    key,
    server,
    settings,
    sportBaseball,
    sportBasketball,
    sportCrossCountry,
    sportFootball,
    sportHorseRacing,
    sportLacrosse,
    sportSoccer,
    sportSoftball,
    sportTrackAndField,
    sportVolleyball,
    warning,
};

/// The icon, drawn anew for each size and scale in the theme's current colour; paler when disabled.
QIcon icon(IconName name, QColor Theme::* color = &Theme::text);

/// Draws the icon into the rectangle.
void paintIcon(QPainter& painter, const QRectF& rectangle, IconName name, const QColor& color);

/// The icon of a sport.
IconName sportIcon(Sport sport);

/// The program's own icon, in its own colours.
QIcon applicationIcon();

} // namespace ostrelle
