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
/// file. It only grows. Several processes may share the file: a save keeps what the others have added.
/// For the thread of the event loop only; images are looked at on the threads of their folders.
class ProcessedFilesManifest : public QObject {
    Q_OBJECT

public:
    /// Makes the file's folder, reads the file, which need not exist, and logs how many entries it has. An
    /// invalid file counts as empty; the first save sets it aside. All references must outlive the manifest.
    ProcessedFilesManifest(const QString& path, FolderThreads& threads, Clock& clock, PlainLog& log,
                           AppEvents& events);
    /// Marks under way are still saved while the event loop runs, but neither logged nor announced.
    ~ProcessedFilesManifest() override;
    ProcessedFilesManifest(const ProcessedFilesManifest&) = delete;
    ProcessedFilesManifest& operator=(const ProcessedFilesManifest&) = delete;

    /// Whether there is exactly this entry.
    bool isProcessed(const ProcessedFileEntry& entry) const;
    /// Whether there is an entry of this name, whatever its size and date.
    bool isProcessedByName(const QString& filename) const;
    /// Whether there is an entry for the file as it is now, or of its name if its attributes cannot be read.
    QCoro::Task<bool> isProcessed(QString file);

    /// Adds the file as it was at the stamp, or else as it is now, saves the manifest and announces
    /// manifestUpdated(). The file counts as processed as soon as its attributes are read. A failure to save
    /// is logged; the next save writes this entry too.
    QCoro::Task<> markProcessed(QString file, std::optional<FileStamp> stamp = {});

    /// Takes in what other programs have added to the file. Costs almost nothing if it has not changed.
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
