// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Arguments.h"

#include "core/Error.h"

#include <QByteArrayView>
#include <QFile>
#include <QFileInfo>
#include <cstdio>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr const char* help = R"(Usage: ostrelle-captions [options] [FILE...]

Opens the window of Ostrelle Captions. Images that are named are captioned, a folder
becomes the watch folder, and a text file the Code Replacements file. If the program
runs already, its window comes to the front and takes them.

  --hidden            no window at first, where there is a tray to open it from
  --caption-images    ask for images to caption
  --switch-auto-mode  turn auto mode on or off, also of the program that runs already
  -h, --help          this text
  --version           the program's version

For captions without a window, see: ostrelle-caption --help
)";

StartRequest::Wish wishOf(const QByteArray& option) {
    using Wish = StartRequest::Wish;
    for (const auto& [name, wish] :
         {std::pair("--hidden", Wish::hide), std::pair("--caption-images", Wish::captionImages),
          std::pair("--switch-auto-mode", Wish::switchAutoMode)}) {
        if (option == name) {
            return wish;
        }
    }
    throw Error(u"There is no option %1."_s.arg(QString::fromLocal8Bit(option)));
}

QString fileOf(const QByteArray& argument) {
    const QString name = QFile::decodeName(argument);
    if (QFile::encodeName(name) != argument) {
        throw Error(u"The name of %1 is not UTF-8, so it cannot be opened. Rename it."_s.arg(
            QString::fromLocal8Bit(argument)));
    }
    return QFileInfo(name).absoluteFilePath();
}

} // namespace

std::optional<int> answerArguments(int argc, const char* const* argv) {
    for (int index = 1; index < argc; ++index) {
        const QByteArrayView argument(argv[index]);
        if (argument == "--") {
            break;
        }
        if (argument == "--help" || argument == "-h") {
            std::fputs(help, stdout);
            return 0;
        }
        if (argument == "--version") {
            std::puts("ostrelle-captions " OSTRELLE_VERSION);
            return 0;
        }
    }
    return std::nullopt;
}

StartRequest startRequest(int argc, const char* const* argv) {
    StartRequest request;
    bool areOptionsOver = false;
    for (int index = 1; index < argc; ++index) {
        const QByteArray argument(argv[index]);
        if (!areOptionsOver && argument == "--") {
            areOptionsOver = true;
        } else if (!areOptionsOver && argument.startsWith('-')) {
            request.wish = wishOf(argument);
        } else {
            request.files.append(fileOf(argument));
        }
    }
    return request;
}

} // namespace ostrelle
