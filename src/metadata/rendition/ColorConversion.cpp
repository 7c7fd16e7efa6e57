// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/rendition/ColorConversion.h"

#include <lcms2.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

namespace ostrelle {

namespace {

using Picture = Raster<std::uint8_t>;

struct Close {
    void operator()(cmsHPROFILE profile) const { cmsCloseProfile(profile); }
};
struct Delete {
    void operator()(cmsHTRANSFORM transform) const { cmsDeleteTransform(transform); }
};
using Profile = std::unique_ptr<std::remove_pointer_t<cmsHPROFILE>, Close>;
using Transform = std::unique_ptr<std::remove_pointer_t<cmsHTRANSFORM>, Delete>;

cmsColorSpaceSignature profileSpace(ColorModel model) {
    switch (model) {
    case ColorModel::gray:
        return cmsSigGrayData;
    case ColorModel::rgb:
        return cmsSigRgbData;
    case ColorModel::cmyk:
    case ColorModel::invertedCmyk:
        break;
    }
    return cmsSigCmykData;
}

cmsUInt32Number pixelFormat(ColorModel model) {
    switch (model) {
    case ColorModel::gray:
        return TYPE_GRAY_8;
    case ColorModel::rgb:
        return TYPE_RGB_8;
    case ColorModel::cmyk:
        return TYPE_CMYK_8;
    case ColorModel::invertedCmyk:
        break;
    }
    return TYPE_CMYK_8_REV;
}

std::optional<Picture> convertByProfile(const Picture& picture, ColorModel model, const QByteArray& profile) {
    const Profile source(
        cmsOpenProfileFromMem(profile.constData(), static_cast<cmsUInt32Number>(profile.size())));
    if (!source || cmsGetColorSpace(source.get()) != profileSpace(model)) {
        return std::nullopt;
    }
    const Profile srgb(cmsCreate_sRGBProfile());
    const Transform transform(cmsCreateTransform(source.get(), pixelFormat(model), srgb.get(), TYPE_RGB_8,
                                                 INTENT_RELATIVE_COLORIMETRIC,
                                                 cmsFLAGS_BLACKPOINTCOMPENSATION));
    if (!transform) {
        return std::nullopt;
    }
    Picture result(picture.size, 3);
    cmsDoTransform(transform.get(), picture.samples.data(), result.samples.data(),
                   static_cast<cmsUInt32Number>(picture.pixelCount()));
    return result;
}

Picture grayToRgb(const Picture& picture) {
    Picture result(picture.size, 3);
    for (std::size_t i = 0; i < picture.samples.size(); ++i) {
        std::fill_n(result.samples.begin() + static_cast<std::ptrdiff_t>(i) * 3, 3, picture.samples[i]);
    }
    return result;
}

/// Each ink absorbs its share of the light, black of all three colours.
Picture cmykToRgb(const Picture& picture, bool inverted) {
    Picture result(picture.size, 3);
    const int flip = inverted ? 0 : 255;
    const std::uint8_t* inks = picture.samples.data();
    std::uint8_t* out = result.samples.data();
    for (std::size_t i = 0; i < picture.pixelCount(); ++i, inks += 4, out += 3) {
        const int black = inks[3] ^ flip;
        for (int channel = 0; channel < 3; ++channel) {
            out[channel] = static_cast<std::uint8_t>(((inks[channel] ^ flip) * black + 127) / 255);
        }
    }
    return result;
}

} // namespace

Picture convertToSrgb(Picture picture, ColorModel model, const QByteArray& profile) {
    if (!profile.isEmpty()) {
        if (std::optional<Picture> converted = convertByProfile(picture, model, profile)) {
            return std::move(*converted);
        }
    }
    switch (model) {
    case ColorModel::gray:
        return grayToRgb(picture);
    case ColorModel::rgb:
        return picture;
    case ColorModel::cmyk:
    case ColorModel::invertedCmyk:
        break;
    }
    return cmykToRgb(picture, model == ColorModel::invertedCmyk);
}

} // namespace ostrelle
