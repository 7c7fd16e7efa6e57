// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/tour/OnboardingSteps.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

std::span<const OnboardingStep> onboardingSteps() {
    static const OnboardingStep steps[] = {
        {.title = u"Welcome to Ostrelle Captions"_s,
         .description =
             u"Ostrelle automatically generates captions for your sports photos using AI, saving you "
             "hours on captioning and helping you deliver on deadline."_s,
         .description2 = {},
         .icon = applicationIconName.toString()},
        {.title = u"Step 1:\nSelect Your Watch Folder"_s,
         .description = u"Choose the folder you want to monitor for new images. Ostrelle will automatically "
                        "caption new images as they're ingested."_s,
         .description2 = {},
         .icon = u"folder.arriving"_s,
         .offer = OnboardingOffer::watchFolder},
        {.title = u"Before the First Caption:\nYour OpenAI API Key"_s,
         .description = u"OpenAI's models write the captions. You need your own API key, and you pay OpenAI "
                        "directly for usage (typically $0.01-0.05 per image)."_s,
         .description2 = {},
         .icon = u"api.key"_s,
         .offer = OnboardingOffer::apiKey},
        {.title = u"Step 2:\nLoad Your Code Replacements File"_s,
         .description =
             u"Load your Photo Mechanic Code Replacements file so AI can identify players by their "
             "jersey numbers."_s,
         .description2 = {},
         .icon = u"roster"_s,
         .offer = OnboardingOffer::codeReplacements},
        {.title = u"Step 3:\nChoose Your Caption Style"_s,
         .description = u"Select your preferred caption format: AP, Getty, Imagn, or Simple."_s,
         .description2 = {},
         .icon = u"caption.styles"_s,
         .offer = OnboardingOffer::captionStyle},
        {.title = u"Want Better Captions?\nTry Advanced Options"_s,
         .description =
             u"Set team jersey colors or the sport you're shooting to help AI better identify players "
             "and generate more accurate captions."_s,
         .description2 = {},
         .icon = u"sportscourt.fill"_s},
        {.title = u"Need Remote Access?\nTry FTP Mode"_s,
         .description =
             u"Switch to FTP mode to automatically download and caption images from a remote server. "
             "Perfect for working with images uploaded by other photographers, remotes, or wireless "
             "hotspot tethering for in-game transmission."_s,
         .description2 = {},
         .icon = u"server.download"_s},
        {.title = u"For Best Results:\nInclude IPTC Metadata"_s,
         .description =
             u"Include date, city, state, venue, event name, and copyright in your Photo Mechanic IPTC "
             "preset. Ostrelle uses this info to create contextually accurate captions with proper "
             "dates and locations."_s,
         .description2 = u"The more complete your metadata, the better your captions will be."_s,
         .icon = u"list.bullet.rectangle"_s,
         .offer = OnboardingOffer::helpGuide},
    };
    return steps;
}

} // namespace ostrelle
