// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/TaskGroup.h"
#include "platform/Clock.h"
#include "platform/DefaultsStore.h"
#include "platform/PlainLog.h"
#include "shell/toolkit/NoticeBar.h"

#include <QCoroTask>
#include <QPointer>
#include <memory>

namespace ostrelle {

/// Shows that the settings cannot be saved, as on a full disk. Checks every few seconds.
class SavingNotice : public NoticeBar {
    Q_OBJECT

public:
    /// The first three arguments must outlive the notice.
    SavingNotice(DefaultsStore& defaults, Clock& clock, PlainLog& console, QWidget* parent = nullptr);

    /// Retries what could not be saved; hides the notice if that works.
    void tryAgain();

private:
    void look();
    static QCoro::Task<> look(QPointer<SavingNotice> notice, const DefaultsStore* defaults);

    DefaultsStore& m_defaults;
    TaskGroup m_looks;
    std::unique_ptr<Timer> m_timer;
};

} // namespace ostrelle
