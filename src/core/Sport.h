// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/RawValue.h"

#include <QList>
#include <QStringList>
#include <array>
#include <functional>

namespace ostrelle {

/// The sport of the shoot.
enum class Sport {
    baseball,
    basketball,
    crossCountry,
    football,
    horseRacing,
    lacrosse,
    soccer,
    softball,
    trackAndField,
    volleyball,
};

template <>
inline std::span<const RawValueRow<Sport>> rawValueRows<Sport>() {
    static constexpr std::array rows = {
        RawValueRow<Sport>{Sport::baseball, u"baseball", u"Baseball"},
        RawValueRow<Sport>{Sport::basketball, u"basketball", u"Basketball"},
        RawValueRow<Sport>{Sport::crossCountry, u"crossCountry", u"Cross Country"},
        RawValueRow<Sport>{Sport::football, u"football", u"Football"},
        RawValueRow<Sport>{Sport::horseRacing, u"horseRacing", u"Horse Racing"},
        RawValueRow<Sport>{Sport::lacrosse, u"lacrosse", u"Lacrosse"},
        RawValueRow<Sport>{Sport::soccer, u"soccer", u"Soccer"},
        RawValueRow<Sport>{Sport::softball, u"softball", u"Softball"},
        RawValueRow<Sport>{Sport::trackAndField, u"trackAndField", u"Track & Field"},
        RawValueRow<Sport>{Sport::volleyball, u"volleyball", u"Volleyball"},
    };
    return rows;
}

/// The sports in the picker: all cases in order except horse racing, which remains valid where it is stored.
QList<Sport> selectableSports();

/// Symbol names for the sport's icon, best first.
QStringList iconCandidates(Sport sport);

/// The first candidate the desktop has a symbol for, or "sportscourt".
QString iconName(Sport sport, const std::function<bool(const QString&)>& symbolExists);

} // namespace ostrelle
