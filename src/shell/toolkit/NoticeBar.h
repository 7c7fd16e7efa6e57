// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFrame>

class QPushButton;

namespace ostrelle {

class StatusMark;

/// A rounded amber bar: what is missing, and a button that leads to where it can be fixed.
class NoticeBar : public QFrame {
    Q_OBJECT

public:
    /// Empty `buttonWords` mean no button.
    NoticeBar(const QString& words, const QString& buttonWords, QWidget* parent = nullptr);

    void setWords(const QString& words);
    QPushButton* button() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    StatusMark* m_words;
    QPushButton* m_button;
};

} // namespace ostrelle
