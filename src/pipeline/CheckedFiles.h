// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/AnalyzerParts.h"

#include <QCoroTask>
#include <QList>
#include <QString>
#include <QStringList>
#include <functional>

#include "checks/Finding.h"

namespace ostrelle {

/// The caption that a file holds, and what there is to look at in it.
struct CheckedFile {
    QString file;
    QString caption = {};
    QString error = {}; ///< why the file could not be read, a sentence; empty if it could
    QList<Finding> findings = {};
};

struct CheckedFiles {
    QList<CheckedFile> files;
    bool hasRoster = false; ///< otherwise names and numbers were not judged
};

/// Reads the captions of the files and checks them against the roster and style of the settings, in their
/// order. `onFile` is called with the index of each before it is read. Changes nothing and never throws. All
/// references must outlive the task.
QCoro::Task<CheckedFiles> checkFiles(AnalyzerParts parts, QStringList files,
                                     std::function<void(qsizetype)> onFile);

} // namespace ostrelle
