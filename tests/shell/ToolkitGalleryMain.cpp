// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/ColorSwatchPicker.h"
#include "shell/InfoButton.h"
#include "shell/Popover.h"
#include "shell/ScreenShots.h"
#include "shell/Theme.h"
#include "shell/ToolkitGallery.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>

using namespace Qt::StringLiterals;

namespace {

/// Gives the focus to a widget after the other and writes a picture of each.
bool writeFocusPictures(QWidget& window, const QString& start) {
    window.activateWindow();
    bool written = true;
    for (const QString& name :
         {u"main"_s, u"byColor"_s, u"audioInfo"_s, u"style0"_s, u"sport"_s, u"Blue"_s}) {
        window.findChild<QWidget*>(name)->setFocus(Qt::TabFocusReason);
        written = ostrelle::saveScreenshot(window, start + u"-focus-"_s + name + u".png"_s) && written;
    }
    return written;
}

bool writePictures(const QString& start) {
    ostrelle::ToolkitGallery window;
    bool written = ostrelle::saveScreenshot(window, start + u".png"_s);
    written = writeFocusPictures(window, start) && written;

    auto* info = window.findChild<ostrelle::InfoButton*>(u"audioInfo"_s);
    info->openPopover();
    written = ostrelle::saveScreenshot(window, start + u"-info.png"_s) && written;
    info->popover()->close();

    window.findChild<QWidget*>(u"Maroon"_s)->setFocus();
    window.findChild<ostrelle::ColorSwatchPicker*>(u"Maroon"_s)->click();
    written = ostrelle::saveScreenshot(window, start + u"-swatches.png"_s) && written;
    window.findChild<ostrelle::ColorSwatchPicker*>(u"Maroon"_s)->popover()->close();

    window.findChild<QComboBox*>(u"sport"_s)->showPopup();
    return ostrelle::saveScreenshot(window, start + u"-sports.png"_s) && written;
}

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    const QString folder = application.arguments().value(1, u"build/screens"_s);
    ostrelle::usePictureFont(application);
    const QString scale = application.devicePixelRatio() > 1 ? u"@2x"_s : QString();
    ostrelle::applyTheme(application, ostrelle::ThemeChoice::light);
    const bool light = writePictures(folder + u"/toolkit-light"_s + scale);
    ostrelle::applyTheme(application, ostrelle::ThemeChoice::dark);
    const bool dark = writePictures(folder + u"/toolkit-dark"_s + scale);
    ostrelle::usePictureFont(application, 18);
    ostrelle::ToolkitGallery large;
    const bool largeType =
        ostrelle::saveScreenshot(large, folder + u"/toolkit-large-type"_s + scale + u".png"_s);
    return light && dark && largeType ? 0 : 1;
}
