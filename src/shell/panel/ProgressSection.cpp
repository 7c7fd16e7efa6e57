// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panel/ProgressSection.h"

#include "shell/panel/ProgressRowView.h"
#include "state/StatisticsTexts.h"

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

ProgressSection::ProgressSection(ShellParts parts, QWidget* parent) : QWidget(parent), m_parts(parts) {
    setObjectName(u"progress"_s);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 4, 0, 4);
    layout->setSpacing(6);

    const StatusStore& status = parts.status;
    for (const auto changed :
         {&StatusStore::isProcessingChanged, &StatusStore::currentFileNameChanged,
          &StatusStore::lastMessageChanged, &StatusStore::processedChanged, &StatusStore::failedChanged,
          &StatusStore::totalFilesChanged, &StatusStore::currentFileIndexChanged,
          &StatusStore::isWaitingForAPIChanged, &StatusStore::currentBatchStartIndexChanged,
          &StatusStore::currentBatchSizeChanged, &StatusStore::currentBatchNumberChanged,
          &StatusStore::totalBatchCountChanged, &StatusStore::ftpIsCheckingChanged,
          &StatusStore::ftpIsDownloadingChanged, &StatusStore::ftpStatusMessageChanged,
          &StatusStore::ftpDownloadProgressChanged, &StatusStore::ftpTotalBytesToDownloadChanged,
          &StatusStore::ftpBytesDownloadedChanged, &StatusStore::ftpRemarksChanged}) {
        connect(&status, changed, this, &ProgressSection::showProgress);
    }
    connect(&parts.settings, &SettingsStore::sourceTypeChanged, this, &ProgressSection::showProgress);
    connect(&parts.usage, &UsageTracker::todaysCostChanged, this, &ProgressSection::showProgress);
    showProgress();
}

void ProgressSection::showProgress() {
    const QList<ProgressRow> rows = rowsOf(m_parts);
    while (m_rows.size() < rows.size()) {
        auto* row = new ProgressRowView;
        row->setObjectName(u"progressRow%1"_s.arg(m_rows.size()));
        layout()->addWidget(row);
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
