// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panel/RosterView.h"

#include "shell/toolkit/ActionButton.h"
#include "shell/toolkit/Theme.h"

#include <QHeaderView>
#include <QLabel>
#include <QTableWidget>
#include <QVBoxLayout>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QTableWidget* makeTable(const QList<RosterEntry>& entries) {
    auto* table = new QTableWidget(static_cast<int>(entries.size()), 2);
    table->setObjectName(u"rosterEntries"_s);
    table->setAccessibleName(u"Entries"_s);
    table->setHorizontalHeaderLabels({u"Code"_s, u"Name"_s});
    table->horizontalHeader()->setStretchLastSection(true);
    table->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    table->verticalHeader()->hide();
    table->setShowGrid(false);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setTabKeyNavigation(false);
    int row = 0;
    for (const RosterEntry& entry : entries) {
        table->setItem(row, 0, new QTableWidgetItem(entry.code));
        table->setItem(row, 1, new QTableWidgetItem(entry.name));
        ++row;
    }
    return table;
}

} // namespace

RosterView::RosterView(const QString& fileName, const CodeReplacements& roster, QWidget* parent)
    : QDialog(parent) {
    setObjectName(u"rosterView"_s);
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(fileName);
    resize(widthForType(400), widthForType(460));
    auto* layout = new QVBoxLayout(this);
    layout->setSpacing(measure::cardSpacing);
    layout->addWidget(makeTable(rosterEntries(roster)), 1);
    if (roster.isTruncated()) {
        layout->addWidget(
            makeLabel(u"The file is long: only these go to the AI."_s, TypeSize::small, TextTone::dim));
    }
    auto* close = new ActionButton(u"Close"_s, ActionKind::main);
    close->setObjectName(u"closeRoster"_s);
    close->setDefault(true);
    connect(close, &ActionButton::clicked, this, &QDialog::accept);
    layout->addWidget(close, 0, Qt::AlignRight);
}

} // namespace ostrelle
