// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QButtonGroup>
#include <QStringList>
#include <QWidget>

namespace ostrelle {

/// A choice of few, all in sight. A single tab stop; arrow keys move the choice. To screen readers it is a
/// group of radio buttons. The segment at index 0 is named "<objectName>0", and so on.
class SegmentedControl : public QWidget {
    Q_OBJECT

public:
    explicit SegmentedControl(const QStringList& names, const QString& objectName = {},
                              QWidget* parent = nullptr);

    int currentIndex() const;

    /// Changes the choice; emits nothing.
    void setCurrentIndex(int index);

Q_SIGNALS:
    /// The user chose another segment.
    void chosen(int index);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QButtonGroup m_segments;
    int m_current = 0;
};

} // namespace ostrelle
