// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/PlainLog.h"
#include "state/ProcessedFilesManifest.h"
#include "state/StatusStore.h"
#include "transfer/ftp/FileTransferClient.h"
#include "transfer/remote/DestinationFolder.h"
#include "transfer/remote/FetchDecision.h"
#include "transfer/remote/FetchLedger.h"
#include "transfer/remote/FetchListener.h"
#include "transfer/remote/FetchedImages.h"

namespace ostrelle {

/// What a poll or a full download works with. All of it must outlive it.
struct FetchParts {
    FileTransferClient& client;
    DestinationFolder& destination;
    FetchLedger& ledger;
    FetchedImages& fetched;
    ProcessedFilesManifest& manifest;
    StatusStore& status;
    PlainLog& log;
    const FetchListener& listener;

    IsCaptioned isCaptioned() const {
        return [known = &manifest](const QString& name) { return known->isProcessedByName(name); };
    }
};

} // namespace ostrelle
