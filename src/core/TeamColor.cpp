// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/TeamColor.h"

namespace ostrelle {

namespace {

constexpr TeamColor blue{u"Blue", {0.0, 0.48, 1.0}};

constexpr std::array colors = {
    TeamColor{u"Black", {0.0, 0.0, 0.0}},
    TeamColor{u"White", {1.0, 1.0, 1.0}},
    TeamColor{u"Gray", {0.56, 0.56, 0.58}},
    TeamColor{u"Red", {1.0, 0.23, 0.19}},
    TeamColor{u"Maroon", {0.5, 0.0, 0.0}},
    TeamColor{u"Orange", {1.0, 0.58, 0.0}},
    TeamColor{u"Yellow", {1.0, 0.8, 0.0}},
    TeamColor{u"Gold", {1.0, 0.84, 0.0}},
    TeamColor{u"Tan", {0.82, 0.71, 0.55}},
    TeamColor{u"Green", {0.16, 0.8, 0.25}},
    blue,
    TeamColor{u"Navy", {0.0, 0.0, 0.5}},
    TeamColor{u"Purple", {0.69, 0.32, 0.87}},
};

} // namespace

std::span<const TeamColor> teamColors() {
    return colors;
}

std::array<double, 3> swatchColor(QStringView name) {
    for (const TeamColor& color : colors) {
        if (color.name == name) {
            return color.swatch;
        }
    }
    return blue.swatch;
}

} // namespace ostrelle
