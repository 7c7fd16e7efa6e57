// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "transfer/ftp/FtpStream.h"

#include <memory>

namespace ostrelle {

class CurlConnections;

/// Makes streams that libcurl fills, each on a worker thread of its own, since the library blocks wherever a
/// server is slow to answer. Connections are kept for the next stream. Streams and their threads may outlive
/// this object.
class CurlFtpStreams {
public:
    CurlFtpStreams();
    ~CurlFtpStreams();
    CurlFtpStreams(const CurlFtpStreams&) = delete;
    CurlFtpStreams& operator=(const CurlFtpStreams&) = delete;

    std::unique_ptr<FtpStream> make(const FtpAddress& address) const;

private:
    std::shared_ptr<CurlConnections> m_connections;
};

} // namespace ostrelle
