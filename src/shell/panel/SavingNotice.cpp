// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panel/SavingNotice.h"

#include <chrono>

namespace ostrelle {

using namespace Qt::StringLiterals;

SavingNotice::SavingNotice(DefaultsStore& defaults, Clock& clock, PlainLog& console, QWidget* parent)
    : NoticeBar(u"Settings cannot be saved: they last until you quit"_s, {}, parent)
    , m_defaults(defaults)
    , m_looks([&console](const QString& words) {
        console.print(u"[MenuContentView] Cannot tell whether settings are saved: "_s + words);
    })
    , m_timer(clock.every(std::chrono::seconds(5), [this] { look(); })) {
    setObjectName(u"savingNotice"_s);
    hide();
}

void SavingNotice::tryAgain() {
    m_defaults.saveAgain();
    look();
}

void SavingNotice::look() {
    m_looks.spawn(look(this, &m_defaults));
}

QCoro::Task<> SavingNotice::look(QPointer<SavingNotice> notice, const DefaultsStore* defaults) {
    co_await defaults->finished();
    if (notice) {
        notice->setVisible(!defaults->isAllSaved());
    }
}

} // namespace ostrelle
