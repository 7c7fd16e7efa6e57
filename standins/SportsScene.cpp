// SPDX-License-Identifier: GPL-3.0-or-later
#include "standins/SportsScene.h"

#include <algorithm>
#include <cmath>

namespace ostrelle {

namespace {

constexpr float horizon = 0.30F;
constexpr float standTop = 0.16F;

constexpr std::array<LinearColor, 4> jerseys = {
    LinearColor{0.60F, 0.02F, 0.03F},
    LinearColor{0.02F, 0.06F, 0.45F},
    LinearColor{0.75F, 0.75F, 0.72F},
    LinearColor{0.70F, 0.42F, 0.02F},
};
constexpr LinearColor skin = {0.48F, 0.25F, 0.15F};
constexpr LinearColor shorts = {0.03F, 0.03F, 0.04F};
constexpr LinearColor chalk = {0.70F, 0.72F, 0.66F};

LinearColor scaled(LinearColor color, float factor) {
    return {color[0] * factor, color[1] * factor, color[2] * factor};
}

std::uint8_t toSrgb(float light) {
    const float clamped = std::clamp(light, 0.0F, 1.0F);
    const float value =
        clamped <= 0.0031308F ? 12.92F * clamped : 1.055F * std::pow(clamped, 1 / 2.4F) - 0.055F;
    return static_cast<std::uint8_t>(std::lround(255 * value));
}

} // namespace

float sceneNoise(std::uint32_t seed, int x, int y) {
    std::uint32_t hash = seed * 0x9E3779B9U ^ static_cast<std::uint32_t>(x) * 0x85EBCA6BU ^
                         static_cast<std::uint32_t>(y) * 0xC2B2AE35U;
    hash = (hash ^ (hash >> 15)) * 0x2C1B3C6DU;
    hash = (hash ^ (hash >> 12)) * 0x297A2D39U;
    return static_cast<float>((hash ^ (hash >> 15)) >> 8) / 16777216.0F;
}

SportsScene::SportsScene(int width, int height, std::uint32_t seed)
    : m_width(width), m_height(height), m_seed(seed) {
    constexpr int playerCount = 6;
    for (int i = 0; i < playerCount; ++i) {
        const float depth = (static_cast<float>(i) + sceneNoise(seed, i, 1)) / playerCount;
        const auto team = static_cast<std::size_t>(sceneNoise(seed, i, 2) < 0.5F ? seed % 4 : (seed + 1) % 4);
        m_players.push_back({0.08F + 0.84F * sceneNoise(seed, i, 3), horizon + 0.12F + 0.5F * depth,
                             0.16F + 0.32F * depth, jerseys[team]});
    }
}

LinearColor SportsScene::at(int x, int y) const {
    const float u = (static_cast<float>(x) + 0.5F) / static_cast<float>(m_width);
    const float v = (static_cast<float>(y) + 0.5F) / static_cast<float>(m_height);
    LinearColor color = background(u, v);
    for (auto player = m_players.rbegin(); player != m_players.rend(); ++player) {
        if (paintPlayer(*player, u, v, color)) {
            break;
        }
    }
    return color;
}

LinearColor SportsScene::background(float u, float v) const {
    if (v < standTop) {
        return {0.20F + 0.8F * v, 0.38F + 1.0F * v, 0.80F};
    }
    if (v < horizon) {
        // A crowd: patches of colour, one per person.
        const int seat = static_cast<int>(u * 160);
        const int tier = static_cast<int>(v * 110);
        const float tint = sceneNoise(m_seed, seat, tier);
        return {0.06F + 0.4F * tint * tint, 0.06F + 0.25F * sceneNoise(m_seed + 1, seat, tier),
                0.08F + 0.2F * tint};
    }
    const float depth = (v - horizon) / (1 - horizon);
    const float across = (u - 0.5F) / (0.35F + depth) + 0.5F;
    const float along = depth / (0.35F + depth);
    if (std::abs(across - 0.5F) < 0.006F || std::abs(along - 0.35F) < 0.008F) {
        return chalk;
    }
    const bool light = static_cast<int>(std::floor(along * 14)) % 2 == 0;
    const float blade =
        0.85F + 0.3F * sceneNoise(m_seed, static_cast<int>(u * 1500), static_cast<int>(v * 1000));
    return scaled({0.07F, 0.23F, 0.035F}, (light ? 1.25F : 0.9F) * blade);
}

/// Paints a head, a striped jersey, shorts and two legs; false when the point is beside the player.
bool SportsScene::paintPlayer(const Player& player, float u, float v, LinearColor& color) const {
    const float up = (player.y - v) / player.height;
    const float aspect = static_cast<float>(m_width) / static_cast<float>(m_height);
    const float side = (u - player.x) * aspect / player.height;
    if (up < 0 || up > 1 || std::abs(side) > 0.2F) {
        return false;
    }
    if (std::hypot(side, up - 0.92F) < 0.08F) {
        color = skin;
    } else if (up > 0.5F && up < 0.84F && std::abs(side) < 0.14F) {
        const bool number = std::abs(side) < 0.03F && up > 0.6F && up < 0.75F;
        color = number ? scaled(chalk, 0.9F) : scaled(player.jersey, 0.8F + 1.5F * (side + 0.14F));
    } else if (up > 0.36F && up <= 0.5F && std::abs(side) < 0.12F) {
        color = shorts;
    } else if (up <= 0.36F && std::abs(std::abs(side) - 0.07F) < 0.04F) {
        color = up < 0.2F ? player.jersey : skin;
    } else {
        return false;
    }
    return true;
}

QImage SportsScene::image(float exposure) const {
    QImage picture(m_width, m_height, QImage::Format_RGB888);
    for (int y = 0; y < m_height; ++y) {
        std::uint8_t* out = picture.scanLine(y);
        for (int x = 0; x < m_width; ++x) {
            const LinearColor color = at(x, y);
            const float factor = exposure * (0.92F + 0.16F * sceneNoise(m_seed + 7, x, y));
            for (const float light : color) {
                *out++ = toSrgb(light * factor);
            }
        }
    }
    return picture;
}

} // namespace ostrelle
