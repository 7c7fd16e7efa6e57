// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/toolkit/NoticeBar.h"

#include "shell/toolkit/ActionButton.h"
#include "shell/toolkit/StatusMark.h"
#include "shell/toolkit/Theme.h"

#include <QHBoxLayout>
#include <QPainter>

namespace ostrelle {

NoticeBar::NoticeBar(const QString& words, const QString& buttonWords, QWidget* parent)
    : QFrame(parent)
    , m_words(new StatusMark(StatusTone::missing, words))
    , m_button(new ActionButton(buttonWords)) {
    m_words->setWordWrap(true);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(measure::cardPadding, 6, measure::cardPadding, 6);
    layout->setSpacing(measure::controlSpacing);
    layout->addWidget(m_words, 1);
    layout->addWidget(m_button);
    m_button->setVisible(!buttonWords.isEmpty());
    m_words->setMinimumHeight(m_button->sizeHint().height()); // the same with or without a button
    setAccessibleName(words);
}

void NoticeBar::setWords(const QString& words) {
    m_words->setStatus(StatusTone::missing, words);
    setAccessibleName(words);
}

QPushButton* NoticeBar::button() const {
    return m_button;
}

void NoticeBar::paintEvent(QPaintEvent*) {
    const Theme& theme = Theme::of(*this);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(theme.missing);
    painter.setBrush(theme.missingGround);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), measure::cardRadius,
                            measure::cardRadius);
}

} // namespace ostrelle
