// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/Sport.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

QList<Sport> selectableSports() {
    QList<Sport> sports;
    for (const RawValueRow<Sport>& row : rawValueRows<Sport>()) {
        if (row.value != Sport::horseRacing) {
            sports.append(row.value);
        }
    }
    return sports;
}

QStringList iconCandidates(Sport sport) {
    switch (sport) {
    case Sport::baseball:
        return {u"baseball.fill"_s, u"baseball"_s, u"sportscourt"_s};
    case Sport::basketball:
        return {u"basketball.fill"_s, u"basketball"_s, u"sportscourt"_s};
    case Sport::crossCountry:
        return {u"figure.run"_s, u"figure.run.circle"_s, u"sportscourt"_s};
    case Sport::football:
        return {u"football.fill"_s, u"football"_s, u"sportscourt"_s};
    case Sport::horseRacing:
        return {u"trophy.fill"_s,
                u"trophy.circle.fill"_s,
                u"trophy.circle"_s,
                u"trophy"_s,
                u"figure.equestrian.sports"_s,
                u"figure.equestrian.sports.circle"_s,
                u"figure.equestrian.sports.circle.fill"_s,
                u"flag.checkered.2.crossed"_s,
                u"flag.checkered.2.crossed.circle"_s,
                u"sportscourt"_s};
    case Sport::lacrosse:
        return {u"lacrosse.stick.and.ball"_s, u"sportscourt"_s};
    case Sport::soccer:
        return {u"soccerball.fill"_s, u"soccerball"_s, u"sportscourt"_s};
    case Sport::softball:
        return {u"softball.fill"_s, u"softball"_s, u"baseball.fill"_s, u"sportscourt"_s};
    case Sport::trackAndField:
        return {u"figure.run"_s, u"figure.run.circle"_s, u"sportscourt"_s};
    case Sport::volleyball:
        return {u"volleyball.fill"_s, u"volleyball"_s, u"sportscourt"_s};
    }
    return {u"sportscourt"_s};
}

QString iconName(Sport sport, const std::function<bool(const QString&)>& symbolExists) {
    for (const QString& candidate : iconCandidates(sport)) {
        if (symbolExists(candidate)) {
            return candidate;
        }
    }
    return u"sportscourt"_s;
}

} // namespace ostrelle
