// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <optional>

namespace ostrelle {

/// What the photographer's ingest preset has stamped on a picture. No text is empty, and all are trimmed.
struct XMPContext {
    std::optional<QString> city;
    std::optional<QString> state;
    std::optional<QString> country;
    std::optional<QString> location;    ///< the venue
    std::optional<QString> dateISO8601; ///< "2024-03-05T19:02:33Z", a day "2024-03-05", or as the file has it
    std::optional<QString> event;
    QStringList keywords; ///< in the file's order, with duplicates

    friend bool operator==(const XMPContext&, const XMPContext&) = default;
};

/// True when every field is empty.
bool contextIsEmpty(const XMPContext& context);

/// All filled fields with their labels, joined with " • ", for the log.
QString contextDescription(const XMPContext& context);

} // namespace ostrelle
