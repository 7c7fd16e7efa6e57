// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

namespace ostrelle {

/// A sidecar with the fields of an ingest preset and its initial caption, both already escaped for XML.
QByteArray shootSidecar(const QByteArray& caption,
                        const QByteArray& headline = "Norwick Herons vs. Fallow Creek Foxes");

} // namespace ostrelle
