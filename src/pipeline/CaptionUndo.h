// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/AnalyzerParts.h"

#include <QCoroTask>
#include <QList>
#include <QString>
#include <optional>

#include "journal/JournalEntry.h"

namespace ostrelle {

/// What became of a caption that was to be taken back.
struct UndoOutcome {
    enum class Kind {
        undone,  ///< the caption before it is back
        left,    ///< left alone: somebody has changed the caption since, or it was taken back before
        unknown, ///< the journal has no caption of the image
        failed,
    };

    QString file;
    Kind kind = Kind::failed;
    QString reason = {};                 ///< a sentence; empty when undone
    std::optional<QString> caption = {}; ///< that the file has now, if it could be read
};

/// Takes captions back: what the journal has from before a caption is written into its file, where the file
/// still holds that caption. A sidecar that was made for it stays, with an empty caption. The image counts as
/// done afterwards, so auto mode leaves it alone.
class CaptionUndo {
public:
    explicit CaptionUndo(AnalyzerParts parts) : m_parts(parts) {}

    /// Takes back the last caption of the image, which may have been renamed since. Never throws.
    QCoro::Task<UndoOutcome> undo(QString file);
    /// The images of the last run whose captions were not taken back yet. Throws JournalError.
    QCoro::Task<QStringList> lastRun();

private:
    QCoro::Task<UndoOutcome> undoEntry(JournalEntry entry, QString file);
    QCoro::Task<std::optional<JournalEntry>> entryOf(QString file);
    QCoro::Task<UndoOutcome> writeBack(JournalEntry entry, QString file);

    AnalyzerParts m_parts;
};

} // namespace ostrelle
