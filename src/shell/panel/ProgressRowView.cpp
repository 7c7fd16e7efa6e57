// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panel/ProgressRowView.h"

#include "shell/toolkit/CounterLabel.h"
#include "shell/toolkit/ElidedLabel.h"
#include "shell/toolkit/ProgressLine.h"
#include "shell/toolkit/Theme.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace ostrelle {

using namespace Qt::StringLiterals;

ProgressRowView::ProgressRowView(QWidget* parent)
    : QWidget(parent), m_text(new ElidedLabel), m_count(new CounterLabel), m_bar(new ProgressLine) {
    m_text->setObjectName(u"progressText"_s);
    m_count->setObjectName(u"progressCount"_s);
    m_count->setFont(typeFont(TypeSize::small));
    m_count->setForegroundRole(QPalette::PlaceholderText);
    m_bar->setObjectName(u"progressBar"_s);
    auto* words = new QHBoxLayout;
    words->setSpacing(measure::controlSpacing);
    words->addWidget(m_text, 1);
    words->addWidget(m_count);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(3);
    layout->addLayout(words);
    layout->addWidget(m_bar);
}

void ProgressRowView::setRow(const ProgressRow& row) {
    const bool isHeading = row.style == ProgressRow::Style::heading;
    m_text->setFont(isHeading ? typeFont(TypeSize::text, QFont::DemiBold) : typeFont(TypeSize::small));
    m_text->setForegroundRole(isHeading ? QPalette::WindowText : QPalette::PlaceholderText);
    m_text->setText(row.text);
    m_text->setVisible(!row.text.isEmpty());
    m_count->setText(row.count);
    m_count->setVisible(!row.count.isEmpty());
    m_bar->setVisible(row.fraction.has_value());
    if (!row.fraction) {
        return; // a hidden bar has nothing to tell
    }
    const QString name = row.text.isEmpty() ? u"Progress"_s : row.text;
    if (m_bar->accessibleName() != name) {
        m_bar->setAccessibleName(name); // each call is told to screen readers
    }
    m_bar->setFraction(*row.fraction);
}

} // namespace ostrelle
