// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLabel>

namespace ostrelle {

/// One line of plain words that is elided where it does not fit; the tooltip then shows all of it. Its size
/// hints do not depend on the words. Screen readers get the full words.
class ElidedLabel : public QLabel {
    Q_OBJECT

public:
    explicit ElidedLabel(const QString& words = {}, Qt::TextElideMode cut = Qt::ElideMiddle,
                         QWidget* parent = nullptr);

    bool isCut() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;

private:
    QString shownWords() const;

    Qt::TextElideMode m_cut;
};

} // namespace ostrelle
