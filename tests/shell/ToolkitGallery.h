// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

namespace ostrelle {

/// Every widget of the toolkit in its states, in one window: for looking at, and for screenshots.
class ToolkitGallery : public QWidget {
    Q_OBJECT

public:
    ToolkitGallery();

private:
    QWidget* settings();
    QWidget* states();
    QWidget* signs();
    QWidget* foot();
};

} // namespace ostrelle
