// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLabel>

namespace ostrelle {

/// One line of plain words that is cut where it does not fit; the tooltip then shows all of it. What it asks
/// of a layout does not depend on the words. Screen readers get them uncut.
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
