// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/JournalCommand.h"

#include "cli/CommandLoop.h"
#include "cli/CommandProgram.h"
#include "cli/TerminalText.h"
#include "core/Attempt.h"
#include "core/Text.h"
#include "pipeline/CaptionUndo.h"
#include "platform/InterruptSignals.h"

#include <QCoroTask>
#include <QJsonDocument>
#include <QJsonObject>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QString word(UndoOutcome::Kind kind) {
    switch (kind) {
    case UndoOutcome::Kind::undone:
        return u"undone"_s;
    case UndoOutcome::Kind::left:
        return u"left"_s;
    case UndoOutcome::Kind::unknown:
        return u"unknown"_s;
    case UndoOutcome::Kind::failed:
        break;
    }
    return u"failed"_s;
}

QString undoText(const UndoOutcome& outcome) {
    const bool isUndone = outcome.kind == UndoOutcome::Kind::undone;
    const QString caption = outcome.caption.value_or(QString()).simplified();
    const QString detail = !isUndone           ? outcome.reason
                           : caption.isEmpty() ? u"It has no caption again."_s
                                               : caption;
    return printable(
        u"%1  %2: %3"_s.arg(word(outcome.kind).leftJustified(7), printableName(outcome.file), detail));
}

QString undoJson(const UndoOutcome& outcome) {
    QJsonObject json{{u"file"_s, outcome.file}, {u"outcome"_s, word(outcome.kind)}};
    if (!outcome.reason.isEmpty()) {
        json.insert(u"reason"_s, outcome.reason);
    }
    if (outcome.caption) {
        json.insert(u"caption"_s, *outcome.caption);
    }
    return QString::fromUtf8(QJsonDocument(json).toJson(QJsonDocument::Compact));
}

/// An interrupt lets the image in the works finish.
class JournalRun : public QObject {
public:
    JournalRun(CommandProgram& program, const InterruptSignals& interrupts)
        : m_program(program), m_undo(program.captions.analyzerParts()) {
        connect(&interrupts, &InterruptSignals::interrupted, this, [this] { m_isInterrupted = true; });
    }

    QCoro::Task<int> run() {
        const bool isForgetting = m_program.options.command == Options::Command::forget;
        const auto done = co_await attempt(isForgetting ? forget() : undo());
        if (!done) {
            m_program.errors.print(u"ostrelle-caption: "_s + done.words());
        }
        const bool isTold = co_await m_program.finish();
        co_return isTold&& done.valueOr(false) ? ExitStatus::success : ExitStatus::fileFailed;
    }

private:
    QCoro::Task<bool> forget() {
        const qint64 count = co_await m_program.captions.forget(m_program.options.before);
        m_program.output.print(u"Forgot %1 caption%2."_s.arg(QString::number(count), plural(count)));
        co_return true;
    }

    QCoro::Task<bool> undo() {
        QStringList files = m_program.options.files;
        if (m_program.options.isLastRun) {
            files = co_await m_undo.lastRun();
        }
        if (files.isEmpty()) {
            m_program.errors.print(u"There is no run whose captions could be taken back."_s);
            co_return false;
        }
        bool isAllUndone = true;
        for (const QString& file : std::as_const(files)) {
            if (m_isInterrupted) {
                m_program.errors.print(u"Interrupted."_s);
                co_return false;
            }
            const UndoOutcome outcome = co_await m_undo.undo(file);
            isAllUndone = isAllUndone && outcome.kind == UndoOutcome::Kind::undone;
            m_program.output.print(m_program.options.json ? undoJson(outcome) : undoText(outcome));
        }
        co_return isAllUndone;
    }

    CommandProgram& m_program;
    CaptionUndo m_undo;
    bool m_isInterrupted = false;
};

} // namespace

int runJournalCommand(const Options& options, const AppFolders& folders, const ServiceEndpoints& endpoints) {
    CommandProgram program(options, folders, endpoints);
    const InterruptSignals interrupts;
    JournalRun run(program, interrupts);
    return runCommandLoop(program, [&run] { return run.run(); });
}

} // namespace ostrelle
