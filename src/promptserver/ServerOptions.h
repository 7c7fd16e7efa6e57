// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

namespace ostrelle {

/// The parsed command line of ostrelle-prompt-server.
struct ServerOptions {
    enum class Command { serve, help, version };

    Command command = Command::serve;
    QString address = QStringLiteral("127.0.0.1");
    int port = 8470;
    QString templateFolder; ///< empty: the built-in texts
    QString keyFile;        ///< empty: the key that the programs are built with
};

/// Parses the arguments after the program's name. Throws Error for invalid ones.
ServerOptions parseServerOptions(const QStringList& arguments);

/// The text of --help.
QString serverHelpText();

/// The key in the first line of the file. Throws Error when there is none.
QString readKeyFile(const QString& path);

} // namespace ostrelle
