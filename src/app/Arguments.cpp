// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Arguments.h"

#include <QByteArrayView>
#include <QFile>
#include <QFileInfo>
#include <cstdio>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr const char* help = R"(Usage: ostrelle-captions [FILE...]

Opens the window of Ostrelle Captions. Images that are named are captioned, a folder
becomes the watch folder, and a text file the Code Replacements file. If the program
runs already, its window comes to the front and takes them.

  --help       this text
  --version    the program's version

For captions without a window, see: ostrelle-caption --help
)";

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

StartFiles startFiles(int argc, const char* const* argv) {
    StartFiles start;
    bool areOptionsOver = false;
    for (int index = 1; index < argc; ++index) {
        const QByteArray argument(argv[index]);
        if (!areOptionsOver && argument == "--") {
            areOptionsOver = true;
        } else if (!areOptionsOver && argument.startsWith('-')) {
            start.error = u"There is no option %1."_s.arg(QString::fromLocal8Bit(argument));
        } else if (QFile::encodeName(QFile::decodeName(argument)) != argument) {
            start.error = u"The name of %1 is not UTF-8, so it cannot be opened. Rename it."_s.arg(
                QString::fromLocal8Bit(argument));
        } else {
            start.files.append(QFileInfo(QFile::decodeName(argument)).absoluteFilePath());
        }
    }
    return start;
}

} // namespace ostrelle
