// SPDX-License-Identifier: GPL-3.0-or-later
#include "promptserver/TemplateFolder.h"

#include "core/Error.h"
#include "platform/Files.h"

#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QUtf8StringView>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// The text between its first and last line breaks.
QString core(const QString& text, qsizetype& before, qsizetype& after) {
    before = 0;
    while (before < text.size() && text.at(before) == u'\n') {
        ++before;
    }
    after = 0;
    while (after < text.size() - before && text.at(text.size() - 1 - after) == u'\n') {
        ++after;
    }
    return text.sliced(before, text.size() - before - after);
}

QString withLineBreaksOf(const QString& builtIn, const QString& text) {
    qsizetype before = 0;
    qsizetype after = 0;
    const QString inner = core(text, before, after);
    core(builtIn, before, after);
    return QString(before, u'\n') + inner + QString(after, u'\n');
}

/// The file's text without what editors of other systems add. Throws Error when it is broken.
QString readText(const QString& path) {
    QByteArray bytes = readFile(path, TemplateFolder::largestFile);
    if (bytes.isEmpty()) { // editors leave a file empty for a moment
        throw Error(u"The file is empty."_s);
    }
    if (!QUtf8StringView(bytes).isValidUtf8() || bytes.contains('\0')) {
        throw Error(u"The file is not text in UTF-8."_s);
    }
    if (bytes.startsWith("\xEF\xBB\xBF")) {
        bytes.remove(0, 3);
    }
    return QString::fromUtf8(bytes.replace("\r\n", "\n"));
}

} // namespace

TemplateFolder::TemplateFolder(QString folder, PromptTexts builtIn, PlainLog& log)
    : m_folder(std::move(folder)), m_builtIn(std::move(builtIn)), m_log(log), m_texts(m_builtIn) {
    if (!QDir(m_folder).exists()) {
        throw Error(u"There is no folder \""_s + m_folder + u"\"."_s);
    }
    namesNobodyKnows();
    texts();
}

PromptTexts TemplateFolder::texts() {
    const std::lock_guard lock(m_mutex);
    if (canSeeFolder()) {
        for (const QString& name : m_builtIn.keys()) {
            refresh(name);
        }
    }
    return m_texts;
}

bool TemplateFolder::canSeeFolder() {
    const bool isThere = QDir(m_folder).exists();
    if (isThere != m_isFolderThere) {
        m_isFolderThere = isThere;
        print(isThere ? u"The folder is there again."_s
                      : u"The folder cannot be seen; its last texts stay in use."_s);
    }
    return isThere;
}

void TemplateFolder::refresh(const QString& name) {
    const QString path = pathOf(name);
    const Stamp stamp = stampOf(path);
    if (std::exchange(m_stamps[name], stamp) == stamp) {
        return;
    }
    if (stamp == Stamp()) {
        m_texts[name] = m_builtIn[name];
        print(name + u".txt is gone; the built-in text is in use."_s);
        return;
    }
    try {
        m_texts[name] = withLineBreaksOf(m_builtIn[name], readText(path));
        print(name + u".txt is in use."_s);
    } catch (const Error& error) {
        print(name + u".txt is broken, its last good text stays in use: "_s + error.localizedDescription());
    }
}

TemplateFolder::Stamp TemplateFolder::stampOf(const QString& path) {
    struct stat status{};
    if (::stat(QFile::encodeName(path).constData(), &status) != 0) {
        return {};
    }
    return {.size = status.st_size,
            .seconds = status.st_ctim.tv_sec,
            .nanoseconds = status.st_ctim.tv_nsec,
            .inode = status.st_ino};
}

void TemplateFolder::namesNobodyKnows() const {
    for (const QString& file : QDir(m_folder).entryList({u"*.txt"_s}, QDir::Files)) {
        if (!m_builtIn.contains(file.chopped(4))) {
            print(file + u" is not the name of any text and is not used."_s);
        }
    }
}

void TemplateFolder::print(const QString& text) const {
    m_log.print(u"[PromptServer] "_s + text);
}

} // namespace ostrelle
