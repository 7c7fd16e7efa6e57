// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/rendition/RawDecoder.h"

#include "metadata/rendition/AreaScaler.h"
#include "metadata/rendition/ExtractError.h"
#include "metadata/rendition/RawStream.h"
#include "metadata/rendition/ToneCurve.h"

#include <QFile>
#include <algorithm>
#include <memory>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// A quarter of a bit per pixel: half of what the strongest lossy RAW compression leaves of a featureless
/// picture, and many times what is in a file truncated after its header.
constexpr std::int64_t leastBytes(std::int64_t pixels) {
    return pixels / 32;
}

/// A decoder that reads ahead may miss part of a block at the end of a complete file.
constexpr std::int64_t readAhead = 64 << 10;

/// Many times more than the headers of a complete file make the library read past its end.
constexpr std::int64_t missingInHeaders = 1 << 20;

/// Some data that the library cannot decode comes out as a single level, or as noise and rounding just above
/// black.
bool isBlank(const Raster<std::uint16_t>& linear) {
    constexpr int noise = 64;
    const std::uint16_t first = linear.samples[0];
    int brightest = 0;
    bool uniform = true;
    for (std::size_t i = 0; i < linear.samples.size(); i += 4) {
        for (std::size_t channel = 0; channel < 3; ++channel) {
            const std::uint16_t sample = linear.samples[i + channel];
            brightest = std::max<int>(brightest, sample);
            uniform = uniform && sample == first;
        }
    }
    return uniform || brightest < noise;
}

[[noreturn]] void refuse(const QString& reason) {
    throw ExtractError(ExtractError::Case::cannotCreateThumbnail, reason);
}

void check(int status) {
    switch (status) {
    case LIBRAW_SUCCESS:
        return;
    case LIBRAW_FILE_UNSUPPORTED:
        refuse(u"LibRaw does not know how this camera packs its RAW data"_s);
    case LIBRAW_IO_ERROR:
    case LIBRAW_DATA_ERROR:
        refuse(u"the RAW data are damaged or cut short"_s);
    default:
        refuse(QString::fromLatin1(LibRaw::strerror(status)));
    }
}

/// LibRaw 0.21 keeps the limit elsewhere than 0.20.
template <typename Data>
void limitMemory(Data& data, unsigned megabytes) {
    if constexpr (requires { data.rawparams.max_raw_memory_mb; }) {
        data.rawparams.max_raw_memory_mb = megabytes;
    } else {
        data.params.max_raw_memory_mb = megabytes;
    }
}

/// LibRaw, exposing something it hides: that it has no matrix for the camera's colours.
class CandidLibRaw : public LibRaw {
public:
    bool staysInRawColors() const { return libraw_internal_data.internal_output_params.raw_color != 0; }
};

/// One RAW file being decoded.
class RawReader {
public:
    explicit RawReader(const QByteArray& path);

    RawPicture read(int limit, RawColors colors);

private:
    void configure();
    void open();
    bool knowsColors() const;
    PictureTurn turn() const;
    void unpack();
    Raster<std::uint16_t> scaledPicture(int limit);
    PixelSize fullSize() const;

    RawStream m_stream;
    CandidLibRaw m_raw; ///< after the stream, which it reads to the end of its life
    bool m_damaged = false;
};

RawReader::RawReader(const QByteArray& path) : m_stream(path.constData()) {
    configure();
    // The library's own handler prints.
    m_raw.set_dataerror_handler(
        [](void* damaged, const char*, const int) { *static_cast<bool*>(damaged) = true; }, &m_damaged);
}

void RawReader::configure() {
    libraw_output_params_t& parameters = m_raw.imgdata.params;
    parameters.use_camera_wb = 1;
    parameters.output_color = 1; // sRGB primaries
    parameters.output_bps = 8;
    parameters.user_flip = 0;
    parameters.no_auto_bright = 1; // renderTones() does it
    limitMemory(m_raw.imgdata, 2048);
}

void RawReader::open() {
    m_stream.allowMissingBytes(missingInHeaders);
    const int status = m_raw.open_datastream(&m_stream);
    if (status != LIBRAW_SUCCESS) {
        throw ExtractError(ExtractError::Case::cannotOpen,
                           status == LIBRAW_FILE_UNSUPPORTED
                               ? u"LibRaw does not know this camera's RAW files"_s
                               : u"the file is damaged or cut short"_s);
    }
    if (!isDecodable(fullSize())) {
        refuse(u"the picture is too large"_s);
    }
    const auto rawPixels = std::int64_t{m_raw.imgdata.sizes.raw_width} * m_raw.imgdata.sizes.raw_height;
    if (rawPixels > maximumPixels || m_stream.size() < leastBytes(rawPixels)) {
        refuse(u"the file is too small for its picture"_s);
    }
}

void RawReader::unpack() {
    m_stream.takeMissingBytes();
    check(m_raw.unpack());
    if (m_damaged || m_raw.error_count() > 0) {
        refuse(u"the picture data are damaged"_s);
    }
    if (m_stream.takeMissingBytes() > readAhead) {
        refuse(u"the picture data are cut short"_s);
    }
}

PixelSize RawReader::fullSize() const {
    return {m_raw.imgdata.sizes.width, m_raw.imgdata.sizes.height};
}

bool RawReader::knowsColors() const {
    return m_raw.imgdata.idata.colors == 1 || !m_raw.staysInRawColors();
}

PictureTurn RawReader::turn() const {
    const int flip = m_raw.imgdata.sizes.flip;
    return {.transposed = (flip & 4) != 0, .fromBottom = (flip & 2) != 0, .fromRight = (flip & 1) != 0};
}

RawPicture RawReader::read(int limit, RawColors colors) {
    open();
    if (colors == RawColors::known && !knowsColors()) {
        refuse(u"LibRaw does not know this camera's colours"_s);
    }
    const PictureTurn stored = turn(); // which decoding resets
    unpack();
    // Half size makes one pixel of each group of four sensors, without interpolating between them.
    m_raw.imgdata.params.half_size = longerSide(fullSize()) / 2 >= limit ? 1 : 0;
    check(m_raw.dcraw_process());
    const bool monochrome = m_raw.imgdata.idata.colors == 1;
    const Raster<std::uint16_t> linear = scaledPicture(limit);
    m_raw.recycle();
    if (isBlank(linear)) {
        refuse(u"the picture data give an empty picture"_s);
    }
    return {renderTones(linear, monochrome), stored};
}

/// The processed picture is 16 bits of linear light in 4 channels. Scaling it directly, rather than the 8-bit
/// copy that the library offers, averages light instead of its encoding and saves that copy.
Raster<std::uint16_t> RawReader::scaledPicture(int limit) {
    PixelSize size;
    int colors = 0;
    int bits = 0;
    m_raw.get_mem_image_format(&size.width, &size.height, &colors, &bits);
    if (!isDecodable(size) || m_raw.imgdata.image == nullptr) {
        refuse(u"the picture has no size"_s);
    }
    AreaScaler<std::uint16_t> scaler(size, fittedSize(size, limit), 4);
    for (int y = 0; y < size.height; ++y) {
        scaler.addRow(m_raw.imgdata.image[static_cast<std::ptrdiff_t>(y) * size.width]);
    }
    return scaler.take();
}

} // namespace

RawPicture decodeRaw(const QString& path, int limit, RawColors colors) {
    // On the heap: the reader is too large for a worker thread's stack.
    const auto reader = std::make_unique<RawReader>(QFile::encodeName(path));
    try {
        return reader->read(limit, colors);
    } catch (const LibRaw_exceptions) {
        refuse(u"the decoder gave up"_s);
    }
}

} // namespace ostrelle
