// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

namespace ostrelle {

/// What another parser than ours reads in an XMP document.
struct OracleReading {
    std::optional<QString> caption; ///< the x-default text of the last dc:description
    /// All that is not a caption's to change, without what a write may add or take out: dc:description in
    /// both forms, rdf:about, declarations of dc and rdf, empty blocks, further RDF elements of one parent.
    QString foreign;
};

/// Nothing when the bytes are not well formed for it.
std::optional<OracleReading> readWithOracle(const QByteArray& bytes);

} // namespace ostrelle
