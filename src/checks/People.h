// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>
#include <optional>

#include "checks/CheckedCaption.h"
#include "checks/RosterNames.h"

namespace ostrelle {

/// A number beside a name.
struct JerseyNumber {
    QString number; ///< normalized
    qsizetype from = 0;
    qsizetype to = 0;
};

/// A person whom a caption names. Places are UTF-16 code units of the caption.
struct PersonMention {
    QString name;
    qsizetype from = 0;
    qsizetype to = 0;
    std::optional<JerseyNumber> number = {};
    QList<RosterPlayer> players = {}; ///< whom of the roster it may mean
    bool isKnown = false;             ///< from the roster or the facts, or of nobody whom a roster has
};

/// The persons in a caption. Finds a name that the roster has wherever it stands, and another one only where
/// the words around it leave no doubt that it is a person's.
QList<PersonMention> peopleIn(const CheckedCaption& checked, const RosterNames& roster);

} // namespace ostrelle
