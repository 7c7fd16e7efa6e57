// SPDX-License-Identifier: GPL-3.0-or-later
#include "promptserver/ServerOptions.h"

#include "core/Error.h"
#include "platform/Files.h"
#include "promptserver/TemplateMaker.h"

#include <QCommandLineParser>
#include <algorithm>
#include <limits>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

int portNumber(const QString& text) {
    bool isNumber = false;
    const int port = text.toInt(&isNumber);
    if (!isNumber || port < 0 || port > std::numeric_limits<quint16>::max()) {
        throw Error(u"There is no port \"%1\"; a port is a number from 0 to 65535."_s.arg(text));
    }
    return port;
}

/// Wrapped to the width of the rest of the help text.
QString textNames() {
    constexpr qsizetype width = 90;
    QString lines;
    QString line = u" "_s;
    for (const QString& name : builtInTemplateTexts().keys()) {
        if (line.size() + name.size() >= width) {
            lines += line + u'\n';
            line = u" "_s;
        }
        line += u' ' + name;
    }
    return lines + line + u'\n';
}

} // namespace

ServerOptions parseServerOptions(const QStringList& arguments) {
    QCommandLineParser parser;
    parser.addOptions({{u"listen"_s, {}, u"address"_s},
                       {u"port"_s, {}, u"number"_s},
                       {u"templates"_s, {}, u"folder"_s},
                       {u"key-file"_s, {}, u"file"_s},
                       {{u"h"_s, u"help"_s}, {}},
                       {u"version"_s, {}}});
    const bool isParsed = parser.parse(QStringList(u"ostrelle-prompt-server"_s) + arguments);
    if (!isParsed) {
        throw Error(parser.errorText());
    }
    if (!parser.positionalArguments().isEmpty()) {
        throw Error(u"\"%1\" is no option."_s.arg(parser.positionalArguments().first()));
    }
    ServerOptions options;
    if (parser.isSet(u"help"_s)) {
        options.command = ServerOptions::Command::help;
    } else if (parser.isSet(u"version"_s)) {
        options.command = ServerOptions::Command::version;
    }
    if (parser.isSet(u"listen"_s)) {
        options.address = parser.value(u"listen"_s);
    }
    if (parser.isSet(u"port"_s)) {
        options.port = portNumber(parser.value(u"port"_s));
    }
    options.templateFolder = parser.value(u"templates"_s);
    options.keyFile = parser.value(u"key-file"_s);
    return options;
}

QString serverHelpText() {
    return u"Usage: ostrelle-prompt-server [options]\n"
           "\n"
           "Serves the caption rules to a team's copies of Ostrelle Captions at GET /api/prompt.\n"
           "\n"
           "Options:\n"
           "  --listen ADDRESS   the address to listen on; 127.0.0.1 if not given\n"
           "  --port NUMBER      the port; 8470 if not given, 0 for a free one\n"
           "  --templates DIR    a folder of text files NAME.txt, each in place of a built-in text; a\n"
           "                     changed file is served at once\n"
           "  --key-file FILE    a file whose first line is the key that clients have to show\n"
           "  -h, --help         this text\n"
           "  --version          the program's version\n"
           "\n"
           "The texts, each of which may have a file:\n"_s +
           textNames();
}

QString readKeyFile(const QString& path) {
    constexpr qint64 largestKeyFile = 4096;
    const QByteArray line = readFile(path, largestKeyFile).split('\n').first().trimmed();
    const QString key = QString::fromUtf8(line);
    if (key.isEmpty() || std::any_of(key.begin(), key.end(), [](QChar c) { return !c.isPrint(); })) {
        throw Error(u"The file \"%1\" has no key in its first line."_s.arg(path));
    }
    return key;
}

} // namespace ostrelle
