// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/PromptLibrary.h"
#include "platform/PlainLog.h"

#include <QMap>
#include <QString>
#include <mutex>

namespace ostrelle {

/// A folder of UTF-8 text files with which a desk rewords the rules: a file NAME.txt replaces the built-in
/// text NAME. Its leading and trailing line breaks are always those of the built-in text, whatever an editor
/// does to them. Thread-safe.
class TemplateFolder {
public:
    /// In bytes; ten times the longest built-in text.
    static constexpr qint64 largestFile = qint64{64} * 1024;

    /// Throws Error when there is no such folder. The log must outlive this.
    TemplateFolder(QString folder, PromptTexts builtIn, PlainLog& log);

    /// All texts, from the files as they are now. A broken file (unreadable, too large, empty, not UTF-8)
    /// keeps its last good text, and so does a folder that cannot be read; logged once per state of a file.
    PromptTexts texts();

private:
    /// Changes when the file does.
    struct Stamp {
        qint64 size = -1; ///< -1 for no file
        qint64 seconds = 0;
        qint64 nanoseconds = 0;
        quint64 inode = 0;
        bool operator==(const Stamp&) const = default;
    };

    static Stamp stampOf(const QString& path);
    bool canSeeFolder();
    void refresh(const QString& name);
    void namesNobodyKnows() const;
    QString pathOf(const QString& name) const { return m_folder + u'/' + name + QStringLiteral(".txt"); }
    void print(const QString& text) const;

    const QString m_folder;
    const PromptTexts m_builtIn;
    PlainLog& m_log;
    std::mutex m_mutex; ///< guards all below
    PromptTexts m_texts;
    QMap<QString, Stamp> m_stamps;
    bool m_isFolderThere = true;
};

} // namespace ostrelle
