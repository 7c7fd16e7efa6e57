// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/RawValue.h"

#include <QDateTime>
#include <QString>
#include <array>
#include <optional>

namespace ostrelle {

/// One caption on its way into a file, and what became of it.
struct JournalEntry {
    enum class State {
        writing, ///< about to be written; of a program that is gone, to be settled by a look at the file
        written,
        failed, ///< not written: the file is as it was
        undone, ///< the caption before it is back
    };

    QString key;     ///< of this entry alone
    QString run;     ///< of the entries that belong together
    QDateTime at;    ///< when it was about to be written, UTC
    QString file;    ///< absolute path of the image
    qint64 size = 0; ///< of the image file, in bytes
    qint64 inode = 0;
    std::optional<QString> before; ///< the caption that the file had; nothing when it had none
    QString after;                 ///< the caption for it
    QString style;                 ///< rawValue() of CaptionStyle
    QString sport;                 ///< rawValue() of Sport
    QString model;
    State state = State::writing;
    qint64 process = 0; ///< of the program that writes it

    bool operator==(const JournalEntry&) const = default;
};

template <>
inline std::span<const RawValueRow<JournalEntry::State>> rawValueRows<JournalEntry::State>() {
    using State = JournalEntry::State;
    static constexpr std::array rows = {
        RawValueRow<State>{State::writing, u"writing", u"Being Written"},
        RawValueRow<State>{State::written, u"written", u"Written"},
        RawValueRow<State>{State::failed, u"failed", u"Failed"},
        RawValueRow<State>{State::undone, u"undone", u"Undone"},
    };
    return rows;
}

} // namespace ostrelle
