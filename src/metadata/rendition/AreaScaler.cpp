// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/rendition/AreaScaler.h"

#include <algorithm>
#include <array>
#include <limits>

namespace ostrelle {

namespace {

/// Where the `index`-th of `count` pixels begins in the source.
double boundary(int sourceLength, int index, int count) {
    return static_cast<double>(std::int64_t{sourceLength} * index) / count;
}

} // namespace

template <typename Sample>
AreaScaler<Sample>::AreaScaler(PixelSize from, PixelSize to, int channels)
    : m_from(from)
    , m_result(to, channels)
    , m_scale(static_cast<float>(static_cast<double>(to.width) / from.width * to.height / from.height))
    , m_sums(static_cast<std::size_t>(from.width) * static_cast<std::size_t>(channels)) {
    m_columns.reserve(static_cast<std::size_t>(to.width));
    for (int x = 0; x < to.width; ++x) {
        const double begin = boundary(from.width, x, to.width);
        const double end = boundary(from.width, x + 1, to.width);
        const int first = static_cast<int>(begin);
        const int last = std::min(static_cast<int>(end), from.width - 1);
        // The last column may lie just past the end and then has no weight.
        m_columns.push_back({first, last, static_cast<float>(std::min(end, first + 1.0) - begin),
                             last > first ? static_cast<float>(std::min(end - last, 1.0)) : 0.0F});
    }
}

template <typename Sample>
void AreaScaler<Sample>::addRow(const Sample* row) {
    const double end = boundary(m_from.height, m_resultRow + 1, m_result.size.height);
    const double top = m_sourceRow;
    const double bottom = ++m_sourceRow;
    if (bottom < end) {
        accumulate(row, 1.0F);
        return;
    }
    accumulate(row, static_cast<float>(end - top));
    finishRow();
    if (bottom > end) {
        accumulate(row, static_cast<float>(bottom - end));
    }
}

template <typename Sample>
void AreaScaler<Sample>::accumulate(const Sample* row, float weight) {
    float* sums = m_sums.data();
    const std::size_t count = m_sums.size();
    for (std::size_t i = 0; i < count; ++i) {
        sums[i] += weight * static_cast<float>(row[i]);
    }
}

/// Averages the gathered rows along the row and starts over.
template <typename Sample>
void AreaScaler<Sample>::finishRow() {
    Sample* out = m_result.row(m_resultRow++);
    switch (m_result.channels) {
    case 1:
        averageColumns<1>(out);
        break;
    case 3:
        averageColumns<3>(out);
        break;
    default:
        averageColumns<4>(out);
    }
    std::fill(m_sums.begin(), m_sums.end(), 0.0F);
}

template <typename Sample>
template <int channels>
void AreaScaler<Sample>::averageColumns(Sample* out) const {
    constexpr float largest = std::numeric_limits<Sample>::max();
    for (const Columns& columns : m_columns) {
        const float* pixel = m_sums.data() + static_cast<std::ptrdiff_t>(columns.first) * channels;
        std::array<float, channels> sum;
        for (std::size_t c = 0; c < channels; ++c) {
            sum[c] = columns.firstWeight * pixel[c];
        }
        for (int column = columns.first + 1; column < columns.last; ++column) {
            pixel += channels;
            for (std::size_t c = 0; c < channels; ++c) {
                sum[c] += pixel[c];
            }
        }
        pixel = m_sums.data() + static_cast<std::ptrdiff_t>(columns.last) * channels;
        for (std::size_t c = 0; c < channels; ++c) {
            const float mean = (sum[c] + columns.lastWeight * pixel[c]) * m_scale;
            *out++ = static_cast<Sample>(std::min(mean + 0.5F, largest));
        }
    }
}

template class AreaScaler<std::uint8_t>;
template class AreaScaler<std::uint16_t>;

} // namespace ostrelle
