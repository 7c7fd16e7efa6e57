// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <array>
#include <cstdint>
#include <vector>

namespace ostrelle {

/// Linear light in sRGB's primaries, 0 to 1.
using LinearColor = std::array<float, 3>;

/// A painted sports picture: sky, a stand, a striped field with lines and a few players in jerseys. The same
/// size and seed always give the same picture.
class SportsScene {
public:
    SportsScene(int width, int height, std::uint32_t seed);

    int width() const { return m_width; }
    int height() const { return m_height; }

    /// The light at a pixel, without noise.
    LinearColor at(int x, int y) const;
    /// The scene as an 8-bit sRGB picture with a little sensor noise, its light multiplied by `exposure`.
    QImage image(float exposure = 1) const;

private:
    struct Player {
        float x;      ///< of the feet, as a fraction of the width
        float y;      ///< of the feet, as a fraction of the height
        float height; ///< as a fraction of the height
        LinearColor jersey;
    };

    LinearColor background(float u, float v) const;
    bool paintPlayer(const Player& player, float u, float v, LinearColor& color) const;

    int m_width;
    int m_height;
    std::uint32_t m_seed;
    std::vector<Player> m_players; ///< from back to front
};

/// A cheap random number from 0 to 1 that depends only on its arguments.
float sceneNoise(std::uint32_t seed, int x, int y);

} // namespace ostrelle
