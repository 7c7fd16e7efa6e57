// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"
#include "platform/FileAccess.h"
#include "platform/FolderThreads.h"
#include "platform/PlainLog.h"
#include "state/StatusStore.h"
#include "transfer/ftp/FtpStream.h"

#include <memory>

namespace ostrelle {

/// What the client works with. All of it must outlive the client's tasks.
struct FtpParts {
    FtpStreamMaker makeStream;
    Clock& clock;
    PlainLog& log;
    FileAccess& access;
    FolderThreads& threads;
    StatusStore& status;
    std::shared_ptr<bool> isAbandoned = std::make_shared<bool>(false); ///< once true, streams fail
};

} // namespace ostrelle
