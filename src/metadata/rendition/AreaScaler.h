// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/rendition/Raster.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace ostrelle {

/// Shrinks a picture: each pixel of the result is the mean of the area it covers in the source. The source is
/// passed row by row from the top, so that it need never be in memory whole.
template <typename Sample>
class AreaScaler {
public:
    /// `to` must not be larger than `from` on either side; 1, 3 or 4 channels.
    AreaScaler(PixelSize from, PixelSize to, int channels);

    /// The next row of the source: from.width * channels samples.
    void addRow(const Sample* row);
    /// The result, once all rows of the source have been added.
    Raster<Sample> take() { return std::move(m_result); }

private:
    /// The source columns under a pixel of the result; those between the two count in full.
    struct Columns {
        int first;
        int last;
        float firstWeight;
        float lastWeight;
    };

    void accumulate(const Sample* row, float weight);
    void finishRow();
    template <int channels>
    void averageColumns(Sample* out) const;

    PixelSize m_from;
    Raster<Sample> m_result;
    std::vector<Columns> m_columns;
    float m_scale;             ///< 1 / (the area under a pixel of the result)
    std::vector<float> m_sums; ///< the weighted sum of the source rows under the next row of the result
    int m_sourceRow = 0;
    int m_resultRow = 0;
};

extern template class AreaScaler<std::uint8_t>;
extern template class AreaScaler<std::uint16_t>;

} // namespace ostrelle
