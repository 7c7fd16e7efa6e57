// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringView>
#include <optional>
#include <span>

namespace ostrelle {

/// What a page of the tour lets the user do right there.
enum class OnboardingOffer { none, watchFolder, apiKey, codeReplacements, captionStyle, helpGuide };

/// Stands for the application's own icon.
inline constexpr QStringView applicationIconName = u"AppIcon";

/// One page of the tour.
struct OnboardingStep {
    QString title;
    QString description;
    std::optional<QString> description2;
    QString icon; ///< a drawing in resources/illustrations, or applicationIconName
    OnboardingOffer offer = OnboardingOffer::none;
};

/// All pages, in order.
std::span<const OnboardingStep> onboardingSteps();

} // namespace ostrelle
