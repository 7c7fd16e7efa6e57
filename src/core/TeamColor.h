// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringView>
#include <array>
#include <span>

namespace ostrelle {

/// A jersey colour: the name that is stored and given to the model, and the sRGB components (0 to 1) of its
/// swatch.
struct TeamColor {
    QStringView name;
    std::array<double, 3> swatch;
};

/// All team colours, in picker order.
std::span<const TeamColor> teamColors();

/// The swatch of the colour of this name; any unknown name paints as Blue.
std::array<double, 3> swatchColor(QStringView name);

} // namespace ostrelle
