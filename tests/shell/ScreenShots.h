// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPixmap>

class QWidget;

namespace ostrelle {

/// Makes pictures look alike on every machine: the first installed of a few good fonts, 13 pixels high.
void usePictureFont();

/// Shows the window, lets it settle, and takes a picture of it with its open popovers and pick lists. The
/// picture has the window's own scale: run with QT_SCALE_FACTOR=2 for twice the size, and with
/// QT_QPA_PLATFORM=offscreen:configfile=tests/shell/screens.json for a screen with room for popovers.
QPixmap screenshot(QWidget& window);

} // namespace ostrelle
