// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/JsonDefaultsStore.h"

#include "platform/FileError.h"
#include "platform/Files.h"
#include "platform/TaggedJson.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <optional>
#include <thread>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 largestFile = 4LL * 1024 * 1024;
constexpr mode_t privateFile = S_IRUSR | S_IWUSR;
constexpr mode_t privateFolder = S_IRWXU;

/// All keys of the file with their tagged values, or nothing when it is not JSON of that shape. An entry that
/// this version does not understand is nothing to read but stays in the file.
std::optional<QJsonObject> parse(const QByteArray& bytes) {
    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    return document.isObject() ? std::optional(document.object()) : std::nullopt;
}

QJsonObject merged(QJsonObject stored, const QJsonObject& changes) {
    for (auto change = changes.constBegin(); change != changes.constEnd(); ++change) {
        if (change.value().isNull()) {
            stored.remove(change.key());
        } else {
            stored.insert(change.key(), change.value());
        }
    }
    return stored;
}

/// Both sets of changes, the later ones on top.
QJsonObject joined(QJsonObject earlier, const QJsonObject& later) {
    for (auto change = later.constBegin(); change != later.constEnd(); ++change) {
        earlier.insert(change.key(), change.value());
    }
    return earlier;
}

void makePrivateFolder(const QString& path) {
    makeFolder(QFileInfo(path).path());
    if (::mkdir(QFile::encodeName(path).constData(), privateFolder) != 0 && errno != EEXIST) {
        throw FileError(u"make the folder"_s, path, errno);
    }
}

/// A name for a damaged file that no other file has: when it was last written, and a number if need be.
QString asideName(const QString& path) {
    const QDateTime written = QFileInfo(path).lastModified().toUTC();
    const QString stem = path + u".broken-"_s + written.toString(u"yyyyMMdd'T'HHmmss.zzz'Z'");
    QString name = stem;
    for (int number = 2; QFileInfo::exists(name); ++number) {
        name = stem + u'-' + QString::number(number);
    }
    return name;
}

/// Keeps the other processes from writing while it lives. The kernel releases it when a process is killed;
/// the lock file itself stays, as removing it would pull it away from under somebody who waits for it.
class WriteLock {
public:
    /// Waits two seconds at most: a write takes far less, and a process that has been stopped in the middle
    /// of one must not stop the others for good. Throws FileError.
    explicit WriteLock(const QString& path) : m_path(path + u".lock"_s) {
        m_descriptor =
            ::open(QFile::encodeName(m_path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, privateFile);
        constexpr int tries = 2000;
        for (int left = tries; m_descriptor >= 0 && ::flock(m_descriptor, LOCK_EX | LOCK_NB) != 0; --left) {
            if (left == 0 || (errno != EWOULDBLOCK && errno != EINTR)) {
                const int reason = errno;
                ::close(m_descriptor);
                errno = reason;
                m_descriptor = -1;
            } else {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        }
        if (m_descriptor < 0) {
            throw FileError(u"lock"_s, m_path, errno);
        }
    }
    ~WriteLock() { ::close(m_descriptor); }
    WriteLock(const WriteLock&) = delete;
    WriteLock& operator=(const WriteLock&) = delete;

private:
    QString m_path;
    int m_descriptor;
};

} // namespace

/// One state of the file. It stays open as long as it is remembered, which keeps its inode number from being
/// given to a later state: no two states that follow within one tick of the file system's clock look alike.
class JsonDefaultsStore::Snapshot {
public:
    /// Throws FileError when the file can neither be looked at nor is missing.
    explicit Snapshot(const QString& path)
        : m_descriptor(::open(QFile::encodeName(path).constData(), O_PATH | O_CLOEXEC)) {
        if (m_descriptor < 0 && errno != ENOENT) {
            throw FileError(u"read"_s, path, errno);
        }
        if (m_descriptor >= 0) {
            ::fstat(m_descriptor, &m_status);
        }
    }
    ~Snapshot() {
        if (m_descriptor >= 0) {
            ::close(m_descriptor);
        }
    }
    Snapshot(const Snapshot&) = delete;
    Snapshot& operator=(const Snapshot&) = delete;

    bool exists() const { return m_descriptor >= 0; }
    bool isOpenToOthers() const { return (m_status.st_mode & (S_IRWXG | S_IRWXO)) != 0; }
    bool isSameAs(const Snapshot& other) const {
        return m_status.st_dev == other.m_status.st_dev && m_status.st_ino == other.m_status.st_ino &&
               m_status.st_size == other.m_status.st_size &&
               m_status.st_mtim.tv_sec == other.m_status.st_mtim.tv_sec &&
               m_status.st_mtim.tv_nsec == other.m_status.st_mtim.tv_nsec;
    }

private:
    int m_descriptor;
    struct stat m_status{};
};

JsonDefaultsStore::JsonDefaultsStore(QString path, PlainLog& log) : m_path(std::move(path)), m_log(log) {}

JsonDefaultsStore::~JsonDefaultsStore() = default;

QVariant JsonDefaultsStore::value(const QString& key) const {
    refresh();
    return plainValue(m_unsaved.contains(key) ? m_unsaved.value(key) : m_stored.value(key));
}

void JsonDefaultsStore::set(const QString& key, const QVariant& value) {
    setAll({{key, value}});
}

void JsonDefaultsStore::setAll(const QVariantMap& values) {
    QJsonObject changes;
    for (auto value = values.begin(); value != values.end(); ++value) {
        const QJsonValue tagged = taggedValue(*value);
        if (tagged.isUndefined()) {
            m_log.print(u"[DefaultsStore] The value for %1 cannot be stored, its type is %2"_s.arg(
                value.key(), QString::fromUtf8(value->typeName())));
        } else {
            changes.insert(value.key(), tagged);
        }
    }
    change(changes);
}

void JsonDefaultsStore::remove(const QString& key) {
    change({{key, QJsonValue::Null}});
}

void JsonDefaultsStore::change(const QJsonObject& changes) {
    refresh();
    if (merged(m_stored, changes) == m_stored && m_unsaved.isEmpty()) {
        return;
    }
    m_unsaved = joined(m_unsaved, changes);
    if (m_isFileOffLimits) {
        return;
    }
    try {
        save();
    } catch (const FileError& error) {
        m_log.print(u"[DefaultsStore] %1 The change is kept in memory until a later one can be saved."_s.arg(
            error.localizedDescription()));
    }
}

/// Writes all that is unsaved on top of what the file holds by now.
void JsonDefaultsStore::save() {
    makePrivateFolder(QFileInfo(m_path).path());
    const WriteLock lock(m_path);
    if (!reload()) {
        setAside();
    }
    if (m_isFileOffLimits) {
        return;
    }
    const QJsonObject contents = merged(m_stored, m_unsaved);
    if (contents != m_stored) {
        const QByteArray bytes = QJsonDocument(contents).toJson();
        if (bytes.size() > largestFile) {
            throw FileError(u"write"_s, m_path, EFBIG); // it would count as damaged when it is read again
        }
        replaceFile(m_path, bytes, privateFile);
        m_stored = contents;
        m_snapshot = std::make_unique<const Snapshot>(m_path);
    }
    m_unsaved = {};
}

void JsonDefaultsStore::refresh() const {
    if (m_isFileOffLimits || reload()) {
        return;
    }
    try {
        const WriteLock lock(m_path);
        if (!reload()) { // still damaged, and nobody else can have set it aside
            setAside();
        }
    } catch (const FileError& error) {
        leaveFileAlone(error);
    }
}

/// Reads the file if it is not in the state that was last seen. False when its contents are not valid.
bool JsonDefaultsStore::reload() const {
    try {
        auto snapshot = std::make_unique<const Snapshot>(m_path);
        if (m_snapshot && m_snapshot->isSameAs(*snapshot)) {
            return true;
        }
        const std::optional<QJsonObject> contents =
            snapshot->exists() ? parse(readFile(m_path, largestFile)) : QJsonObject();
        if (!contents) {
            return false;
        }
        if (snapshot->isOpenToOthers()) { // the model service's key is in it
            [[maybe_unused]] const int closed = ::chmod(QFile::encodeName(m_path).constData(), privateFile);
        }
        m_stored = *contents;
        m_snapshot = std::move(snapshot);
    } catch (const FileError& error) {
        if (error.code() == EFBIG) {
            return false;
        }
        if (error.code() != ENOENT) { // which it is when another process has set it aside just now
            leaveFileAlone(error);
        }
    }
    return true;
}

void JsonDefaultsStore::setAside() const {
    const QString name = asideName(m_path);
    if (std::rename(QFile::encodeName(m_path).constData(), QFile::encodeName(name).constData()) != 0) {
        leaveFileAlone(FileError(u"set aside"_s, m_path, errno));
        return;
    }
    m_log.print(
        u"[DefaultsStore] The settings in %1 are damaged and start anew; the old file is now %2"_s.arg(m_path,
                                                                                                       name));
    m_stored = {};
    m_snapshot.reset();
}

void JsonDefaultsStore::leaveFileAlone(const std::exception& reason) const {
    m_isFileOffLimits = true;
    m_log.print(u"[DefaultsStore] %1 Settings are kept in memory until the program ends."_s.arg(
        QString::fromUtf8(reason.what())));
}

} // namespace ostrelle
