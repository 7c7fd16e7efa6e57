// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/panel/ShellParts.h"
#include "transfer/RosterWatch.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

namespace ostrelle {

/// Something that keeps images from being captioned, and what helps.
struct Problem {
    enum class Remedy { tryAgain, openSettings, openServerSettings, chooseFolder, chooseRoster, openFolder };

    QString words;               ///< a sentence
    QStringList files = {};      ///< the images without a caption, if it is theirs
    QString reason = {};         ///< of these files, as FailedImages knows it
    QList<Remedy> remedies = {}; ///< the one that helps most is last
    bool isFailure = false;      ///< something failed, and does not only wait
};

/// All that needs the user's attention. The notices at the top of the panel show their own.
class Problems : public QObject {
    Q_OBJECT

public:
    /// All must outlive the object.
    Problems(ShellParts parts, const RosterWatch& roster, QObject* parent = nullptr);

    const QList<Problem>& list() const { return m_list; }

Q_SIGNALS:
    void changed();

private:
    void lookSoon();
    void look();

    ShellParts m_parts;
    const RosterWatch& m_roster;
    QList<Problem> m_list;
    bool m_isLooking = false;
};

} // namespace ostrelle
