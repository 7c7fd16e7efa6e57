// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <QString>
#include <QStringList>

namespace ostrelle {

/// The files of one kind ("sidecars", "jpeg", "raw") in the corpus of real files, sorted by name; empty
/// when this machine has no corpus.
QStringList corpusFiles(const QString& kind);

} // namespace ostrelle

/// Skips the current test, with a message, when there is no corpus.
#define SKIP_WITHOUT_CORPUS(files)                                                                           \
    if ((files).isEmpty()) {                                                                                 \
        GTEST_SKIP() << "no corpus of real files on this machine (OSTRELLE_CORPUS)";                         \
    }
