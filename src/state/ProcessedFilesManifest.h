// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"
#include "platform/FileStamp.h"
#include "platform/FolderThreads.h"
#include "platform/PlainLog.h"
#include "product/AppEvents.h"
#include "state/ProcessedFileEntry.h"

#include <QCoroTask>
#include <QObject>
#include <QString>
#include <memory>
#include <optional>

namespace ostrelle {

/// Remembers across runs which files have been captioned, by name, size and modification date, in one JSON
/// file. It only grows. Several processes may share the file: a save adds to it what the others have not.
/// For the thread of the event loop only; an image is looked at on its folder's thread.
class ProcessedFilesManifest : public QObject {
    Q_OBJECT

public:
    /// Makes the file's folder and reads the file, which need not exist. A file that is not valid counts as
    /// empty; it is kept under another name beside it when the first save replaces it. The log says how many
    /// entries there are. All references must outlive the manifest.
    ProcessedFilesManifest(const QString& path, FolderThreads& threads, Clock& clock, PlainLog& log,
                           AppEvents& events);
    /// Marks that are under way are still saved as long as the event loop runs, but neither logged nor
    /// announced.
    ~ProcessedFilesManifest() override;
    ProcessedFilesManifest(const ProcessedFilesManifest&) = delete;
    ProcessedFilesManifest& operator=(const ProcessedFilesManifest&) = delete;

    /// Whether just this entry is there.
    bool isProcessed(const ProcessedFileEntry& entry) const;
    /// Whether there is an entry of this name, whatever its size and date.
    bool isProcessedByName(const QString& filename) const;
    /// The first of these for the file as it is now, or the second when its attributes cannot be read.
    QCoro::Task<bool> isProcessed(QString file);

    /// Adds the file as it was when it had the stamp, or else as it is now, saves the manifest and announces
    /// manifestUpdated(). The file counts as processed as soon as its attributes are read. A failure to save
    /// is logged, and the next save tries again with everything.
    QCoro::Task<> markProcessed(QString file, std::optional<FileStamp> stamp = {});

    /// Takes in what other programs have added to the file by now. Costs next to nothing when it is as it
    /// was.
    QCoro::Task<> refresh();

    /// How many entries there are.
    qsizetype count() const;

    /// Why the last save failed; empty when all is saved.
    QString savingFailure() const;

Q_SIGNALS:
    void savingFailureChanged();

private:
    struct State;

    void load(const QString& path);
    static QCoro::Task<> runSaves(std::shared_ptr<State> state);
    static QCoro::Task<> save(std::shared_ptr<State> state);

    std::shared_ptr<State> m_state;
};

} // namespace ostrelle
