// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFrame>

class QPushButton;

namespace ostrelle {

class StatusMark;

/// A rounded amber bar: what is missing, and the button that leads to where it is mended.
class NoticeBar : public QFrame {
    Q_OBJECT

public:
    /// Without words for the button there is none.
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
