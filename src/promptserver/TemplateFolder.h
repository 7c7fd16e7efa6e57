// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/PromptLibrary.h"
#include "platform/PlainLog.h"

#include <QMap>
#include <QString>
#include <mutex>

namespace ostrelle {

/// A folder of text files in UTF-8, in which a desk words the rules its own way: a file NAME.txt stands in
/// for the built-in text NAME. Its first and last line breaks are those of the built-in text, whatever an
/// editor makes of them. May be used from several threads.
class TemplateFolder {
public:
    /// In bytes; the longest built-in text is a tenth of it.
    static constexpr qint64 largestFile = qint64{64} * 1024;

    /// Throws Error when there is no such folder. The log must outlive this.
    TemplateFolder(QString folder, PromptTexts builtIn, PlainLog& log);

    /// All texts as the files are now. A broken file (unreadable, too large, empty, no UTF-8) keeps the last
    /// good text, and so does a folder that cannot be seen; the log says so, once for each state of a file.
    PromptTexts texts();

private:
    /// Differs when the file does.
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
