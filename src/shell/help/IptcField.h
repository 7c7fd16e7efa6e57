// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <span>

namespace ostrelle {

/// A field of image metadata that a good caption needs.
struct IptcField {
    QString name;
    QString icon; ///< a drawing in resources/illustrations
    QString note;
};

std::span<const IptcField> iptcFields();

} // namespace ostrelle
