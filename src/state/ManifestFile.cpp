// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/ManifestFile.h"

#include "core/Error.h"
#include "platform/FileError.h"
#include "platform/FileLock.h"
#include "platform/Files.h"

#include <sys/stat.h>

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QSet>
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::seconds longestWait(10); // for another process that saves

constexpr auto nameKey = "filename"_L1;
constexpr auto sizeKey = "fileSize"_L1;
constexpr auto dateKey = "modificationDate"_L1;

QByteArray encode(const ProcessedFileEntry& entry) {
    const QJsonObject object{
        {nameKey, entry.filename}, {sizeKey, entry.fileSize}, {dateKey, entry.modificationDate}};
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

ProcessedFileEntry decode(const QJsonObject& object) {
    const QJsonValue name = object.value(nameKey);
    const QJsonValue size = object.value(sizeKey);
    const QJsonValue date = object.value(dateKey);
    // toInteger() returns its default for anything but an integer.
    const bool isInteger = size.toInteger(0) == size.toInteger(1);
    if (!name.isString() || !isInteger || !date.isDouble() || !std::isfinite(date.toDouble())) {
        throw Error(u"An entry is not valid."_s);
    }
    return {.filename = name.toString(), .fileSize = size.toInteger(), .modificationDate = date.toDouble()};
}

/// Throws Error if the bytes are not an array of valid entries.
QList<ProcessedFileEntry> decodeAll(const QByteArray& bytes) {
    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    if (!document.isArray()) {
        throw Error(u"The file is not a JSON array."_s);
    }
    const QJsonArray array = document.array();
    QList<ProcessedFileEntry> entries;
    entries.reserve(array.size());
    for (const QJsonValue element : array) {
        entries.append(decode(element.toObject()));
    }
    return entries;
}

/// Adds an element to an encoded array.
void addElement(QByteArray& array, const QByteArray& element) {
    array.chop(1);
    if (array.size() > 1) {
        array.append(',');
    }
    array.append(element).append(']');
}

/// The entries that are not among the others.
QList<ProcessedFileEntry> difference(const QList<ProcessedFileEntry>& entries,
                                     const QList<ProcessedFileEntry>& others) {
    const QSet<ProcessedFileEntry> excluded(others.begin(), others.end());
    QList<ProcessedFileEntry> rest;
    std::copy_if(entries.begin(), entries.end(), std::back_inserter(rest),
                 [&excluded](const ProcessedFileEntry& entry) { return !excluded.contains(entry); });
    return rest;
}

} // namespace

std::optional<ManifestFile::Identity> ManifestFile::Identity::of(const QString& path) {
    struct stat status{};
    if (::stat(QFile::encodeName(path).constData(), &status) != 0) {
        return std::nullopt;
    }
    return Identity{.device = status.st_dev,
                    .inode = status.st_ino,
                    .size = status.st_size,
                    .seconds = status.st_mtim.tv_sec,
                    .nanoseconds = status.st_mtim.tv_nsec};
}

QList<ProcessedFileEntry> ManifestFile::load() {
    // Before reading, so that a file replaced in between counts as changed.
    const std::optional<Identity> identity = Identity::of(m_path);
    const QByteArray bytes = readFile(m_path, largestFile);
    QList<ProcessedFileEntry> entries = decodeAll(bytes);
    m_array = entries.isEmpty() ? "[]"_ba : bytes.trimmed();
    m_identity = identity;
    return entries;
}

ManifestFile::Outcome ManifestFile::append(const QList<ProcessedFileEntry>& entries) {
    m_unsaved += entries; // first, so that no failure below loses them
    makeFolder(QFileInfo(m_path).path());
    const FileLock lock(m_path, longestWait);
    const bool isNothingLost = takeIn();
    QByteArray array = m_array;
    for (const ProcessedFileEntry& entry : difference(m_unsaved, m_foreign)) {
        addElement(array, encode(entry));
    }
    if (array.size() > largestFile) { // it could not be read again
        throw FileError(u"write"_s, m_path, EFBIG);
    }
    replaceFile(m_path, array);
    m_array = array;
    m_identity = Identity::of(m_path);
    m_unsaved.clear();
    return {.foreign = std::exchange(m_foreign, {}), .isNothingLost = isNothingLost};
}

QList<ProcessedFileEntry> ManifestFile::refresh() {
    const std::optional<Identity> identity = Identity::of(m_path);
    if (!identity || identity == m_identity) {
        return {};
    }
    takeInBytes(readFile(m_path, largestFile));
    m_identity = identity;
    return std::exchange(m_foreign, {});
}

/// Catches up with the file. False if it is damaged and was not set aside.
bool ManifestFile::takeIn() {
    const std::optional<Identity> identity = Identity::of(m_path);
    if (!identity || identity == m_identity) {
        return true;
    }
    try {
        takeInBytes(readFile(m_path, largestFile));
        m_identity = identity;
    } catch (const Error&) {
        return setAside();
    }
    return true;
}

void ManifestFile::takeInBytes(const QByteArray& bytes) {
    const QByteArray known = m_array.chopped(1);
    if (m_array != "[]" && bytes.startsWith(known + ',')) { // another process has added to it
        const QList<ProcessedFileEntry> added = decodeAll('[' + bytes.sliced(known.size() + 1));
        if (added.isEmpty()) {
            throw Error(u"The array ends with a comma."_s);
        }
        m_foreign += added;
        m_array = bytes.trimmed();
        return;
    }
    const QList<ProcessedFileEntry> before = decodeAll(m_array);
    const QList<ProcessedFileEntry> now = decodeAll(bytes);
    m_foreign += difference(now, before);
    m_unsaved += difference(before, now);
    m_array = now.isEmpty() ? "[]"_ba : bytes.trimmed();
}

/// False if as many damaged files as we keep are there already.
bool ManifestFile::setAside() const {
    constexpr int most = 5;
    for (int number = 0; number < most; ++number) {
        const QString name =
            m_path + u".broken"_s + (number == 0 ? QString() : u'.' + QString::number(number));
        if (QFileInfo::exists(name)) {
            continue;
        }
        if (std::rename(QFile::encodeName(m_path).constData(), QFile::encodeName(name).constData()) != 0) {
            throw FileError(u"set aside"_s, m_path, errno);
        }
        return true;
    }
    return false;
}

} // namespace ostrelle
