// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/help/UpdateNews.h"

#include "core/Text.h"

#include <chrono>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString openPage = u"Open Product Page"_s;

Alert newsWith(const QString& title, const QString& text) {
    Alert alert;
    alert.title = title;
    alert.text = text;
    alert.buttons = QStringList{u"OK"_s};
    return alert;
}

} // namespace

UpdateNews::UpdateNews(UpdateChecker& checker, WebPages pages, Alerts& alerts, Workspace& workspace,
                       Clock& clock, PlainLog& log)
    : m_checker(checker)
    , m_pages(std::move(pages))
    , m_alerts(alerts)
    , m_workspace(workspace)
    , m_clock(clock)
    , m_tasks(
          [&log](const QString& words) { log.print(u"[AppDelegate] Cannot tell of updates: "_s + words); }) {
    connect(&checker, &UpdateChecker::checked, this, [this](const UpdateResult& result) {
        if (result.isAsked || result.kind == UpdateResult::Kind::newer) {
            m_tasks.spawn(tell(newsOf(result)));
        }
    });
}

void UpdateNews::checkSoon() {
    constexpr std::chrono::seconds quiet(2); // the start comes first
    if (m_checker.isBuiltIn()) {
        m_soon = m_clock.after(quiet, [this] { m_checker.checkForUpdatesInBackground(); });
    }
}

void UpdateNews::check() {
    if (m_checker.isBuiltIn()) {
        m_checker.checkForUpdates();
        return;
    }
    m_tasks.spawn(
        tell(newsWith(u"Updates Come With Your System"_s,
                      u"This version of Ostrelle Captions is updated with the packages of your system."_s)));
}

Alert UpdateNews::newsOf(const UpdateResult& result) const {
    constexpr qsizetype mostNotes = 1500; // characters that a dialog has room for
    switch (result.kind) {
    case UpdateResult::Kind::current:
        return newsWith(u"Ostrelle Captions Is Up to Date"_s,
                        u"%1 is the newest version."_s.arg(result.version));
    case UpdateResult::Kind::failed:
        return newsWith(u"Could Not Check for Updates"_s, result.reason);
    case UpdateResult::Kind::newer:
        break;
    }
    Alert alert = newsWith(u"Ostrelle Captions %1 Is Available"_s.arg(result.version),
                           firstCharacters(result.notes, mostNotes));
    if (!m_pages.product.isEmpty()) {
        alert.buttons = QStringList{openPage, u"Not Now"_s};
    }
    return alert;
}

QCoro::Task<> UpdateNews::tell(Alert alert) {
    const QString answer = co_await m_alerts.show(alert);
    if (answer == openPage) {
        m_workspace.openLink(m_pages.product);
    }
}

} // namespace ostrelle
