// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/TaskGroup.h"
#include "platform/DefaultsStore.h"
#include "platform/PlainLog.h"
#include "shell/NoticeBar.h"

#include <QPointer>

namespace ostrelle {

/// Tells that the settings cannot be saved, as on a full disk; away while they can.
class SavingNotice : public NoticeBar {
    Q_OBJECT

public:
    /// Looks at once. Both arguments have to outlive the notice.
    SavingNotice(const DefaultsStore& defaults, PlainLog& console, QWidget* parent = nullptr);

    /// Finds out anew, after the saves that are under way.
    void lookAgain();

private:
    static QCoro::Task<> look(QPointer<SavingNotice> notice, const DefaultsStore* defaults);

    const DefaultsStore& m_defaults;
    TaskGroup m_looks;
};

} // namespace ostrelle
