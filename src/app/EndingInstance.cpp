// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/EndingInstance.h"

#include <QDateTime>
#include <QEventLoop>
#include <QMessageBox>
#include <QPushButton>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::milliseconds pause(200);

} // namespace

SingleInstance::Standing EndingInstance::wait() {
    SingleInstance::Standing standing = m_instance.claim();
    if (standing != SingleInstance::Standing::early) {
        return standing;
    }
    QMessageBox news;
    news.setObjectName(u"endingInstance"_s);
    news.setWindowTitle(u"Ostrelle Captions"_s);
    news.setText(u"Ostrelle Captions is finishing its last images"_s);
    news.setInformativeText(u"It starts again as soon as they are done."_s);
    news.addButton(u"Cancel"_s, QMessageBox::RejectRole);

    const QDateTime deadline = m_clock.now().addMSecs(std::chrono::milliseconds(patience).count());
    QEventLoop loop;
    const auto again = m_clock.every(pause, [&] {
        if (standing == SingleInstance::Standing::early) {
            standing = m_instance.claim();
        }
        if (standing != SingleInstance::Standing::early) {
            loop.quit();
        } else if (m_clock.now() >= deadline) {
            news.setText(u"Ostrelle Captions has not ended yet"_s);
            news.setInformativeText(u"Start it again later."_s);
        }
    });
    QObject::connect(&news, &QMessageBox::finished, &loop, &QEventLoop::quit);
    news.open();
    loop.exec();
    return standing;
}

} // namespace ostrelle
