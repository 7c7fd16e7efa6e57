// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Event.h"
#include "transfer/ftp/FtpAddress.h"

#include <QString>
#include <QtGlobal>
#include <functional>
#include <memory>

namespace ostrelle {

/// What a transfer has told of the server.
struct FtpServerFacts {
    bool isAnswering = false;
    bool isEncrypted = false; ///< it has answered over TLS, or has shown a certificate
    QString untrustedCertificate =
        {}; ///< the SHA-256 fingerprint of the certificate that was refused, if any
};

/// The bytes of one file or one folder's listing on their way from a server. No call blocks. For the thread
/// of the event loop only. Destroying the stream closes it.
class FtpStream {
public:
    /// The numbers appear in the log.
    enum class Status { notOpen = 0, opening = 1, open = 2, reading = 3, atEnd = 5, closed = 6, error = 7 };

    virtual ~FtpStream() = default;

    /// Begins to open the stream. False if it cannot be opened.
    virtual bool open() = 0;
    /// The end, a close or an error shows only once all bytes have been read.
    virtual Status status() const = 0;
    virtual bool hasBytesAvailable() const = 0;
    /// Returns how many bytes were read into the buffer; a negative number is a failure.
    virtual qint64 read(char* buffer, qint64 size) = 0;
    virtual void close() = 0;
    /// Happens with the next change of status() or hasBytesAvailable(), if the stream can tell.
    virtual Event news() = 0;
    /// Why the stream failed, a sentence; empty if it did not.
    virtual QString failure() const = 0;
    /// Known once the stream has ended.
    virtual FtpServerFacts facts() const { return {}; }
};

/// Makes a stream, or nothing if the address cannot be opened.
using FtpStreamMaker = std::function<std::unique_ptr<FtpStream>(const FtpAddress& address)>;

} // namespace ostrelle
