// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/Options.h"

#include "transfer/ftp/CertificateCheck.h"

#include <QCommandLineParser>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

struct StyleName {
    QString name;
    CaptionStyle style;
};

QList<StyleName> styleNames() {
    return {{u"ap"_s, CaptionStyle::apSports},
            {u"getty"_s, CaptionStyle::gettySports},
            {u"imagn"_s, CaptionStyle::imagnImages},
            {u"simple"_s, CaptionStyle::simple}};
}

QString sportNames() {
    QStringList names;
    for (const RawValueRow<Sport>& row : rawValueRows<Sport>()) {
        names.append(row.rawValue.toString());
    }
    return names.join(u", "_s);
}

void addOptions(QCommandLineParser& parser) {
    parser.addOptions({
        {u"style"_s, {}, u"ap|getty|imagn|simple"_s},
        {u"sport"_s, {}, u"name"_s},
        {u"roster"_s, {}, u"file"_s},
        {u"overwrite"_s, {}},
        {u"keep"_s, {}},
        {u"json"_s, {}},
        {u"verbose"_s, {}},
        {u"last-run"_s, {}},
        {u"day"_s, {}, u"day"_s},
        {u"html"_s, {}, u"file"_s},
        {u"before"_s, {}, u"day"_s},
        {u"clear"_s, {}},
        {u"show-prompt"_s, {}},
        {u"folder"_s, {}, u"dir"_s},
        {u"only-new"_s, {}},
        {u"retry-failed"_s, {}},
        {u"watch"_s, {}, u"dir"_s},
        {u"server"_s, {}, u"url"_s},
        {u"into"_s, {}, u"dir"_s},
        {u"download-all"_s, {}},
        {u"password-stdin"_s, {}},
        {u"tls"_s, {}},
        {u"certificate"_s, {}, u"fingerprint"_s},
        {{u"h"_s, u"help"_s}, {}},
        {u"version"_s, {}},
    });
}

/// Fills in the options. Returns what is wrong with their values, if anything.
QString readValues(const QCommandLineParser& parser, Options& options) {
    if (parser.isSet(u"style"_s)) {
        for (const StyleName& row : styleNames()) {
            if (row.name == parser.value(u"style"_s)) {
                options.style = row.style;
            }
        }
        if (!options.style) {
            return u"There is no style \"%1\"; the styles are ap, getty, imagn and simple."_s.arg(
                parser.value(u"style"_s));
        }
    }
    if (parser.isSet(u"sport"_s)) {
        options.sport = fromRawValue<Sport>(parser.value(u"sport"_s));
        if (!options.sport) {
            return u"There is no sport \"%1\"; the sports are %2."_s.arg(parser.value(u"sport"_s),
                                                                         sportNames());
        }
    }
    if (parser.isSet(u"roster"_s)) {
        options.roster = parser.value(u"roster"_s);
    }
    if (parser.isSet(u"overwrite"_s) && parser.isSet(u"keep"_s)) {
        return u"--overwrite and --keep exclude each other."_s;
    }
    if (parser.isSet(u"overwrite"_s)) {
        options.overwrite = Options::Overwrite::always;
    } else if (parser.isSet(u"keep"_s)) {
        options.overwrite = Options::Overwrite::never;
    }
    options.json = parser.isSet(u"json"_s);
    options.verbose = parser.isSet(u"verbose"_s);
    if (options.json && options.verbose) {
        return u"--json and --verbose exclude each other: both write to standard output."_s;
    }
    return {};
}

/// --folder or --watch, instead of files.
QString readFolderCommand(const QCommandLineParser& parser, Options& options) {
    const bool isWatching = parser.isSet(u"watch"_s);
    const bool isOnlyNew = parser.isSet(u"only-new"_s);
    if (isWatching && (parser.isSet(u"folder"_s) || isOnlyNew)) {
        return u"--watch excludes --folder and --only-new."_s;
    }
    if (!options.files.isEmpty() || parser.isSet(u"show-prompt"_s)) {
        return u"--folder and --watch exclude files and --show-prompt."_s;
    }
    options.command = isWatching ? Options::Command::watchFolder : Options::Command::captionFolder;
    options.folder = parser.value(isWatching ? u"watch"_s : u"folder"_s);
    options.images = isOnlyNew ? FolderImages::onlyNew : FolderImages::all;
    return {};
}

/// --server, instead of files.
QString readServerCommand(const QCommandLineParser& parser, Options& options) {
    for (const QString& other : {u"folder"_s, u"watch"_s, u"only-new"_s, u"show-prompt"_s}) {
        if (parser.isSet(other)) {
            return u"--server excludes --%1."_s.arg(other);
        }
    }
    if (!options.files.isEmpty()) {
        return u"--server excludes files."_s;
    }
    options.server = QUrl(parser.value(u"server"_s), QUrl::StrictMode);
    if (!options.server.password().isEmpty()) {
        return u"The server's address holds a password, which others can see there. Leave it out: it is "
               "asked for, or read from standard input with --password-stdin."_s;
    }
    if (options.server.hasQuery() || options.server.hasFragment()) {
        return u"Write \"?\" and \"#\" in the server's address as %3F and %23."_s;
    }
    const bool isEncrypted = options.server.scheme() == u"ftps";
    if ((!isEncrypted && options.server.scheme() != u"ftp") || options.server.host().isEmpty() ||
        options.server.userName().isEmpty()) {
        return u"The server's address must look like ftp://USER@HOST/PATH."_s;
    }
    options.tls = isEncrypted || parser.isSet(u"tls"_s);
    options.certificate = normalizedFingerprint(parser.value(u"certificate"_s));
    if (parser.isSet(u"certificate"_s) && options.certificate.isEmpty()) {
        return u"--certificate takes a SHA-256 fingerprint: 64 hexadecimal digits, with or without colons."_s;
    }
    if (!options.certificate.isEmpty() && !options.tls) {
        return u"--certificate belongs to --tls."_s;
    }
    options.into = parser.value(u"into"_s);
    if (options.into.isEmpty()) {
        return u"Name the folder that the server's files go into: --into DIR"_s;
    }
    options.command =
        parser.isSet(u"download-all"_s) ? Options::Command::downloadServer : Options::Command::watchServer;
    options.passwordStdin = parser.isSet(u"password-stdin"_s);
    return {};
}

/// --retry-failed, instead of files.
QString readRetryCommand(const QCommandLineParser& parser, Options& options) {
    for (const QString& other : {u"folder"_s, u"watch"_s, u"server"_s, u"only-new"_s, u"show-prompt"_s}) {
        if (parser.isSet(other)) {
            return u"--retry-failed excludes --%1."_s.arg(other);
        }
    }
    options.isRetry = true;
    return options.files.isEmpty() ? QString() : u"--retry-failed excludes files."_s;
}

/// What is wrong with options that the command does not take; empty if nothing is.
QString refusedOption(const QCommandLineParser& parser, const QString& command, const QStringList& allowed) {
    for (const QString& name : parser.optionNames()) {
        if (!allowed.contains(name)) {
            return u"\"%1\" does not take --%2."_s.arg(command, name);
        }
    }
    return {};
}

/// check FILE...
QString readCheckCommand(const QCommandLineParser& parser, Options& options) {
    options.command = Options::Command::check;
    options.files.removeFirst();
    const QString refused =
        refusedOption(parser, u"check"_s, {u"roster"_s, u"style"_s, u"json"_s, u"verbose"_s});
    return refused.isEmpty() && options.files.isEmpty() ? u"No file was given."_s : refused;
}

/// undo FILE... and undo --last-run
QString readUndoCommand(const QCommandLineParser& parser, Options& options) {
    options.command = Options::Command::undo;
    options.files.removeFirst();
    options.isLastRun = parser.isSet(u"last-run"_s);
    const QString refused = refusedOption(parser, u"undo"_s, {u"last-run"_s, u"json"_s, u"verbose"_s});
    if (!refused.isEmpty()) {
        return refused;
    }
    return options.isLastRun != options.files.isEmpty() ? u"Name files to \"undo\", or --last-run."_s
                                                        : QString();
}

/// report --html FILE, of files, a folder, a day or the last run
QString readReportCommand(const QCommandLineParser& parser, Options& options) {
    options.command = Options::Command::report;
    options.files.removeFirst();
    const QString refused = refusedOption(
        parser, u"report"_s,
        {u"html"_s, u"last-run"_s, u"day"_s, u"folder"_s, u"roster"_s, u"style"_s, u"verbose"_s});
    if (!refused.isEmpty()) {
        return refused;
    }
    options.isLastRun = parser.isSet(u"last-run"_s);
    options.day = QDate::fromString(parser.value(u"day"_s), Qt::ISODate);
    if (parser.isSet(u"folder"_s)) {
        options.folder = parser.value(u"folder"_s);
    }
    options.html = parser.value(u"html"_s);
    if (parser.isSet(u"day"_s) && !options.day.isValid()) {
        return u"Name a day: report --day 2026-01-31"_s;
    }
    const int sources = (options.files.isEmpty() ? 0 : 1) + (options.isLastRun ? 1 : 0) +
                        (options.day.isValid() ? 1 : 0) + (options.folder ? 1 : 0);
    if (sources != 1) {
        return u"Name files to \"report\", or one of --last-run, --day and --folder."_s;
    }
    return options.html.isEmpty() ? u"Name the page that \"report\" writes: --html FILE"_s : QString();
}

/// forget --before DATE
QString readForgetCommand(const QCommandLineParser& parser, Options& options) {
    options.command = Options::Command::forget;
    const QString refused = refusedOption(parser, u"forget"_s, {u"before"_s});
    if (!refused.isEmpty() || options.files.size() > 1) {
        return refused.isEmpty() ? u"\"forget\" takes no files."_s : refused;
    }
    options.before = QDate::fromString(parser.value(u"before"_s), Qt::ISODate).startOfDay();
    return options.before.isValid() ? QString() : u"Name a day: forget --before 2026-01-31"_s;
}

/// `key`, `check`, `report`, `undo` or `forget` as the first word is a command; a file of that name can be
/// given as
/// ./key.
QString readCommand(const QCommandLineParser& parser, Options& options) {
    options.files = parser.positionalArguments();
    const bool clear = parser.isSet(u"clear"_s);
    if (options.files.value(0) == u"key") {
        const qsizetype clearOptions = clear ? 1 : 0;
        if (parser.optionNames().size() != clearOptions) {
            return u"\"key\" takes no options but --clear."_s;
        }
        options.command = clear ? Options::Command::clearKey : Options::Command::storeKey;
        return options.files.size() == 1
                   ? QString()
                   : u"\"key\" takes no argument: the API key is read from standard input, where nobody else can see it."_s;
    }
    if (options.files.value(0) == u"check") {
        return readCheckCommand(parser, options);
    }
    if (options.files.value(0) == u"undo") {
        return readUndoCommand(parser, options);
    }
    if (options.files.value(0) == u"report") {
        return readReportCommand(parser, options);
    }
    if (options.files.value(0) == u"forget") {
        return readForgetCommand(parser, options);
    }
    if (parser.isSet(u"last-run"_s) || parser.isSet(u"day"_s) || parser.isSet(u"html"_s)) {
        return u"--last-run belongs to \"undo\" and \"report\", --day and --html to \"report\"."_s;
    }
    if (parser.isSet(u"before"_s)) {
        return u"--before belongs to \"forget\"."_s;
    }
    if (clear) {
        return u"--clear belongs to \"key\"."_s;
    }
    if (parser.isSet(u"show-prompt"_s)) {
        options.command = Options::Command::showPrompt;
        if (options.json) {
            return u"--show-prompt and --json exclude each other."_s;
        }
    }
    if (parser.isSet(u"retry-failed"_s)) {
        return readRetryCommand(parser, options);
    }
    if (parser.isSet(u"server"_s)) {
        return readServerCommand(parser, options);
    }
    for (const QString& option :
         {u"into"_s, u"download-all"_s, u"password-stdin"_s, u"tls"_s, u"certificate"_s}) {
        if (parser.isSet(option)) {
            return u"--%1 belongs to --server."_s.arg(option);
        }
    }
    if (parser.isSet(u"folder"_s) || parser.isSet(u"watch"_s)) {
        return readFolderCommand(parser, options);
    }
    if (parser.isSet(u"only-new"_s)) {
        return u"--only-new belongs to --folder."_s;
    }
    return options.files.isEmpty() ? u"No file was given."_s : QString();
}

} // namespace

ParsedOptions parseOptions(const QStringList& arguments) {
    QCommandLineParser parser;
    addOptions(parser);
    ParsedOptions parsed;
    const bool isParsed = parser.parse(QStringList(u"ostrelle-caption"_s) + arguments);
    if (!isParsed) {
        parsed.error = parser.errorText();
    } else if (parser.isSet(u"help"_s)) {
        parsed.options.command = Options::Command::help;
    } else if (parser.isSet(u"version"_s)) {
        parsed.options.command = Options::Command::version;
    } else {
        parsed.error = readValues(parser, parsed.options);
        if (parsed.error.isEmpty()) {
            parsed.error = readCommand(parser, parsed.options);
        }
    }
    return parsed;
}

QString helpText() {
    return u"Usage: ostrelle-caption [options] FILE...\n"
           "  or:  ostrelle-caption [options] --folder DIR [--only-new]\n"
           "  or:  ostrelle-caption [options] --watch DIR\n"
           "  or:  ostrelle-caption [options] --server ftp://USER@HOST/PATH --into DIR [--download-all]\n"
           "  or:  ostrelle-caption [options] --retry-failed\n"
           "  or:  ostrelle-caption check [options] FILE...\n"
           "  or:  ostrelle-caption report FILE... | --last-run | --day DAY | --folder DIR --html FILE\n"
           "  or:  ostrelle-caption undo FILE... | --last-run\n"
           "  or:  ostrelle-caption forget --before DAY\n"
           "  or:  ostrelle-caption key [--clear]\n"
           "\n"
           "Writes a caption into the XMP sidecar of each RAW image and into each JPEG.\n"
           "\n"
           "  --folder DIR    all images of the folder, ten in a request\n"
           "  --only-new      only those that have not been captioned before\n"
           "  --watch DIR     whatever arrives in the folder without a caption, until Ctrl-C\n"
           "  --retry-failed  the images that failed in the last run of this program\n"
           "  --server URL    whatever arrives in a folder of the FTP server, until Ctrl-C. PATH begins at "
           "the\n"
           "                  folder that the user is in after the login; //PATH begins at the topmost one\n"
           "  --into DIR      the folder that its files go into\n"
           "  --download-all  fetch and caption all that is there, and end\n"
           "  --password-stdin\n"
           "                  read the server's password from standard input; otherwise it comes from the\n"
           "                  keyring, if the server is that of the settings, or is asked for\n"
           "  --tls           encrypt the transfer (explicit TLS), as does an ftps address\n"
           "  --certificate SHA256\n"
           "                  trust only the certificate with this fingerprint\n"
           "\n"
           "Options, for this run only:\n"
           "  --style STYLE   ap, getty, imagn or simple\n"
           "  --sport NAME    "_s +
           sportNames().replace(u", lacrosse"_s, u",\n                  lacrosse"_s) +
           u"\n"
           "  --roster FILE   the Code Replacements file of the game\n"
           "  --overwrite     replace captions that are there already\n"
           "  --keep          leave images with a caption of 51 characters or more alone\n"
           "  --json          one line of JSON for each file\n"
           "  --show-prompt   print the text that the model would be sent, and send and write nothing\n"
           "  --verbose       also show the log lines of the pipeline\n"
           "  -h, --help      this text\n"
           "  --version       the program's version\n"
           "\n"
           "ostrelle-caption check reads the captions that the files hold now, whoever wrote them, and tells "
           "what\n"
           "does not fit the roster (--roster), the file's own metadata or the style (--style). It sends "
           "and\n"
           "changes nothing. Its exit status is 1 when it finds something.\n"
           "\n"
           "ostrelle-caption report writes an HTML page with the pictures, their captions and what the "
           "checks find:\n"
           "of files, of a folder, of all that was captioned on a day, or of the last run.\n"
           "\n"
           "ostrelle-caption undo puts back the captions that the files had before this program or the "
           "window\n"
           "wrote theirs, for the files or with --last-run for all of the last run. A caption that somebody "
           "has\n"
           "changed since stays. Captions are remembered for 90 days; ostrelle-caption forget --before\n"
           "2026-01-31 removes what the journal, the log and the copies of pictures have from before that "
           "day.\n"
           "\n"
           "ostrelle-caption key stores the API key that it reads from standard input; with --clear it\n"
           "forgets the stored one.\n"
           "\n"
           "Exit status: 0 all is well, 1 a file failed, 2 wrong usage or missing configuration.\n"_s;
}

} // namespace ostrelle
