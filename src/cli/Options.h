// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/CaptionStyle.h"
#include "core/Sport.h"
#include "pipeline/FolderSource.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <optional>

namespace ostrelle {

/// The parsed command line.
struct Options {
    enum class Command {
        caption,
        showPrompt,
        check,
        undo,
        forget,
        report,
        captionFolder,
        watchFolder,
        watchServer,
        downloadServer,
        storeKey,
        clearKey,
        help,
        version
    };
    enum class Overwrite { asSet, always, never };

    Command command = Command::caption;
    QStringList files;
    bool isRetry = false;          ///< the files are those that failed in the last run
    std::optional<QString> folder; ///< of captionFolder and watchFolder
    FolderImages images = FolderImages::all;
    QUrl server;                ///< an ftp or ftps address with a user, for watchServer and downloadServer
    QString into;               ///< where its files go
    bool passwordStdin = false; ///< read the server's password from standard input without asking
    bool tls = false;           ///< encrypt the transfer
    QString certificate;        ///< the only one to trust, by its fingerprint; empty for those of authorities
    std::optional<CaptionStyle> style;
    std::optional<Sport> sport;
    std::optional<QString> roster;
    Overwrite overwrite = Overwrite::asSet;
    bool json = false;
    bool verbose = false;
    bool isLastRun = false; ///< undo or report all of the last run, instead of files
    QDate day;              ///< report what was captioned on it
    QString html;           ///< where the report goes
    QDateTime before;       ///< forget what is older
};

/// The options, or an error.
struct ParsedOptions {
    Options options;
    QString error; ///< empty when there is none
};

/// Parses the arguments after the program's name.
ParsedOptions parseOptions(const QStringList& arguments);

/// The text of --help.
QString helpText();

} // namespace ostrelle
