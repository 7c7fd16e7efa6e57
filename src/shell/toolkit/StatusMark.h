// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLabel>

namespace ostrelle {

/// How something went, or how it is.
enum class StatusTone { plain, good, missing, destroying };

/// An icon and words in the colour of the tone, never the colour alone. Plain words have no icon. The words
/// wrap if setWordWrap() is on.
class StatusMark : public QLabel {
    Q_OBJECT

public:
    explicit StatusMark(StatusTone tone = StatusTone::plain, const QString& words = {},
                        QWidget* parent = nullptr);

    StatusTone tone() const;
    void setStatus(StatusTone tone, const QString& words);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    StatusTone m_tone;
};

} // namespace ostrelle
