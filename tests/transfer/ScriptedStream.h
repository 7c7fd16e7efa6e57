// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "transfer/ftp/FtpStream.h"

#include <QByteArray>
#include <QList>
#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>

namespace ostrelle {

/// What a stream does, step by step. It has no news: its readers wait as long as they are willing to.
struct StreamScript {
    bool opens = true;
    int checksUntilOpen = 0;             ///< of its status
    QList<QByteArray> reads = {};        ///< an empty one is a read that brings nothing
    std::optional<qint64> lastRead = {}; ///< what a further read returns
    int idleChecks = 0;                  ///< without a byte, before it ends
    FtpStream::Status end = FtpStream::Status::atEnd;
};

/// A stream that follows its script.
class ScriptedStream : public FtpStream {
public:
    ScriptedStream(StreamScript script, int* closings) : m_script(std::move(script)), m_closings(closings) {}

    bool open() override {
        m_isOpened = true;
        return m_script.opens;
    }
    Status status() const override {
        if (!m_isOpened) {
            return Status::notOpen;
        }
        if (m_script.checksUntilOpen > 0) {
            --m_script.checksUntilOpen;
            return Status::opening;
        }
        if (!m_wasOpen) {
            m_wasOpen = true;
            const bool fails = m_script.reads.isEmpty() && m_script.end == Status::error;
            return fails ? Status::error : Status::open;
        }
        return m_script.idleChecks-- > 0 ? Status::reading : m_script.end;
    }
    bool hasBytesAvailable() const override { return !m_script.reads.isEmpty() || m_script.lastRead; }
    qint64 read(char* buffer, qint64 size) override {
        if (m_script.reads.isEmpty()) {
            return m_script.lastRead.value_or(0);
        }
        QByteArray& next = m_script.reads.first();
        const qint64 count = std::min<qint64>(size, next.size());
        std::memcpy(buffer, next.constData(), static_cast<std::size_t>(count));
        next.remove(0, count);
        if (next.isEmpty()) {
            m_script.reads.removeFirst();
        }
        return count;
    }
    void close() override { ++*m_closings; }
    Event news() override { return Event(); }
    QString failure() const override { return {}; }

private:
    mutable StreamScript m_script;
    bool m_isOpened = false;
    mutable bool m_wasOpen = false;
    int* m_closings;
};

} // namespace ostrelle
