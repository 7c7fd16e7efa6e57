// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/SavingNotice.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

SavingNotice::SavingNotice(const DefaultsStore& defaults, PlainLog& console, QWidget* parent)
    : NoticeBar(u"Settings cannot be saved: they last until you quit"_s, {}, parent)
    , m_defaults(defaults)
    , m_looks([&console](const QString& words) {
        console.print(u"[MenuContentView] Cannot tell whether settings are saved: "_s + words);
    }) {
    setObjectName(u"savingNotice"_s);
    hide();
    lookAgain();
}

void SavingNotice::lookAgain() {
    m_looks.spawn(look(this, &m_defaults));
}

QCoro::Task<> SavingNotice::look(QPointer<SavingNotice> notice, const DefaultsStore* defaults) {
    co_await defaults->finished();
    if (notice) {
        notice->setVisible(!defaults->isAllSaved());
    }
}

} // namespace ostrelle
