// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

namespace ostrelle {

/// The guide to the metadata that a good caption needs. Escape closes it, Page Up and Page Down scroll it.
class HelpView : public QWidget {
    Q_OBJECT

public:
    explicit HelpView(QWidget* parent = nullptr);
    /// `picture` is a picture of a preset, an SVG file or resource; words replace it when it is missing.
    explicit HelpView(const QString& picture, QWidget* parent = nullptr);

protected:
    void keyPressEvent(QKeyEvent* event) override;
};

} // namespace ostrelle
