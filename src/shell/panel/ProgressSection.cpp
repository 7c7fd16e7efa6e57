// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panel/ProgressSection.h"

#include "shell/panel/PanelActions.h"
#include "shell/panel/ProgressRowView.h"
#include "shell/toolkit/ActionButton.h"
#include "shell/toolkit/Theme.h"
#include "state/StatisticsTexts.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// The rows for the current state, with the day's cost beside a heading.
QList<ProgressRow> rowsOf(const ShellParts& parts) {
    QList<ProgressRow> rows = progressRows(parts.settings.sourceType(), parts.status);
    const bool hasCost = parts.usage.todaysCost() > 0;
    if (hasCost && !rows.isEmpty() && rows.first().style == ProgressRow::Style::heading) {
        rows.first().count = StatisticsTexts::of(parts.status, parts.usage).todaysCost + u" today"_s;
    }
    return rows;
}

} // namespace

ProgressSection::ProgressSection(ShellParts parts, PanelActions& actions, QWidget* parent)
    : QWidget(parent)
    , m_parts(parts)
    , m_pause(new ActionButton(u"Pause"_s))
    , m_stop(new ActionButton(u"Stop"_s))
    , m_rowsLayout(new QVBoxLayout) {
    setObjectName(u"progress"_s);
    m_rowsLayout->setSpacing(6);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 4, 0, 4);
    layout->setSpacing(measure::cardPadding);
    layout->addLayout(m_rowsLayout, 1);
    layout->addWidget(m_pause, 0, Qt::AlignTop);
    layout->addWidget(m_stop, 0, Qt::AlignTop);
    addPause(actions);
    addStop(actions);

    const StatusStore& status = parts.status;
    for (const auto changed : {&StatusStore::isProcessingChanged,
                               &StatusStore::currentFileNameChanged,
                               &StatusStore::lastMessageChanged,
                               &StatusStore::processedChanged,
                               &StatusStore::failedChanged,
                               &StatusStore::totalFilesChanged,
                               &StatusStore::currentFileIndexChanged,
                               &StatusStore::isWaitingForAPIChanged,
                               &StatusStore::currentBatchStartIndexChanged,
                               &StatusStore::currentBatchSizeChanged,
                               &StatusStore::currentBatchNumberChanged,
                               &StatusStore::totalBatchCountChanged,
                               &StatusStore::queueChanged,
                               &StatusStore::isPausedChanged,
                               &StatusStore::ftpIsCheckingChanged,
                               &StatusStore::ftpIsDownloadingChanged,
                               &StatusStore::ftpStatusMessageChanged,
                               &StatusStore::ftpDownloadProgressChanged,
                               &StatusStore::ftpTotalBytesToDownloadChanged,
                               &StatusStore::ftpBytesDownloadedChanged,
                               &StatusStore::ftpRemarksChanged}) {
        connect(&status, changed, this, &ProgressSection::showProgress);
    }
    connect(&parts.settings, &SettingsStore::sourceTypeChanged, this, &ProgressSection::showProgress);
    connect(&parts.usage, &UsageTracker::todaysCostChanged, this, &ProgressSection::showProgress);
    showProgress();
}

void ProgressSection::addPause(PanelActions& actions) {
    m_pause->setObjectName(u"pause"_s);
    connect(m_pause, &ActionButton::clicked, this,
            [this, &actions] { actions.setPaused(!m_parts.status.isPaused()); });
}

/// Far from the buttons that begin a run: those under way may end at any moment, and a click must not hit
/// another button than was aimed at.
void ProgressSection::addStop(PanelActions& actions) {
    m_stop->setObjectName(u"stop"_s);
    m_stop->setText(u"S&top"_s);
    m_stop->setToolTip(u"Finishes the images in the works and begins no others; turns auto mode off."_s);
    m_stop->setAccessibleDescription(m_stop->toolTip());
    connect(m_stop, &ActionButton::clicked, this, [this, &actions] {
        m_stop->setEnabled(false); // what is in the works may take a while
        actions.stop();
    });
}

void ProgressSection::showProgress() {
    const bool isPaused = m_parts.status.isPaused();
    const bool isBusy = hasWork(m_parts.status);
    m_pause->setText(isPaused ? u"&Resume"_s : u"&Pause"_s);
    m_pause->setToolTip(isPaused ? u"Goes on with the images that wait."_s
                                 : u"Finishes the images in the works; the others wait until you resume."_s);
    m_pause->setVisible(isBusy || isPaused);
    m_stop->setVisible(isBusy);
    m_stop->setEnabled(m_stop->isEnabled() || !isBusy);
    const QList<ProgressRow> rows = rowsOf(m_parts);
    while (m_rows.size() < rows.size()) {
        auto* row = new ProgressRowView;
        row->setObjectName(u"progressRow%1"_s.arg(m_rows.size()));
        m_rowsLayout->addWidget(row);
        m_rows.append(row);
    }
    for (qsizetype index = 0; index < m_rows.size(); ++index) {
        const bool isNeeded = index < rows.size();
        if (isNeeded) {
            m_rows[index]->setRow(rows[index]);
        }
        m_rows[index]->setVisible(isNeeded);
    }
    setVisible(!rows.isEmpty());
}

} // namespace ostrelle
