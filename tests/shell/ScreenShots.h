// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class QApplication;
class QWidget;

namespace ostrelle {

/// Gives pictures the same type on every machine: the first of a few good fonts that is there, 13 pixels high
/// or as a desktop with larger type would ask.
void usePictureFont(QApplication& application, int pixels = 13);

/// Shows the window, lets it settle, and writes it as PNG with the popovers and pick lists that are open
/// above it. The picture has the window's own scale: run with QT_SCALE_FACTOR=2 for one of twice the size,
/// and with QT_QPA_PLATFORM=offscreen:configfile=tests/shell/screens.json for a screen with room for
/// popovers.
bool saveScreenshot(QWidget& window, const QString& path);

} // namespace ostrelle
