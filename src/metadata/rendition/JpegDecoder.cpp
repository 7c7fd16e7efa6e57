// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/rendition/JpegDecoder.h"

#include "metadata/rendition/AreaScaler.h"
#include "metadata/rendition/ExtractError.h"
#include "metadata/rendition/JpegErrors.h"
#include "metadata/rendition/JpegSource.h"

#include <fcntl.h>
#include <jerror.h>
#include <unistd.h>

#include <QFile>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <optional>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// Encoders write about ten scans and no sensible script more than thirty; in a hostile file, each scan of a
/// few bytes can cost a pass over the whole picture.
constexpr int maximumScans = 100;
/// Limits the coefficients of a progressive picture, which the library keeps in memory.
constexpr long maximumMemory = 512L << 20;
/// The header parts that the library keeps are limited only by the size of the file.
constexpr long maximumFileSize = 512L << 20;
/// How much larger than the result, at least, the library's own block scaling leaves the picture. For 24
/// megapixels this took 62 ms and came within 44 dB of a filter over the full picture; twice the size took 84
/// ms for 46 dB. Neither is distinguishable from it by eye.
constexpr double reserve = 1.4;

/// Zeros at the end of an incompletely copied file can pass for picture data, but not all of them do.
constexpr int maximumStrayBytes = 256;

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

/// Damage before a restart marker is limited: the decoder resynchronizes there.
bool isRestart(int marker) {
    return marker >= JPEG_RST0 && marker <= JPEG_RST0 + 7;
}

[[noreturn]] void refuse(const QString& reason) {
    throw ExtractError(ExtractError::Case::cannotCreateThumbnail, reason);
}

File openFile(const QString& path) {
    File file(std::fopen(QFile::encodeName(path).constData(), "rbe"));
    if (!file) {
        throw ExtractError(ExtractError::Case::cannotOpen, qt_error_string());
    }
    return file;
}

/// The opened file as the library reads it.
File duplicateOf(ImageFile& image) {
    if (!image.open()) {
        throw ExtractError(ExtractError::Case::cannotOpen, image.reason());
    }
    const int descriptor = ::fcntl(image.bytes().handle(), F_DUPFD_CLOEXEC, 0);
    File file(descriptor < 0 ? nullptr : ::fdopen(descriptor, "rb"));
    if (!file) {
        const QString reason = qt_error_string();
        if (descriptor >= 0) {
            ::close(descriptor);
        }
        throw ExtractError(ExtractError::Case::cannotOpen, reason);
    }
    return file;
}

/// Goes to the start of the range.
File placedAt(File file, ByteRange range) {
    if (range.size() > maximumFileSize) {
        refuse(u"the file is too large"_s);
    }
    if (std::fseek(file.get(), range.begin, SEEK_SET) != 0) {
        refuse(u"the file is cut short"_s);
    }
    return file;
}

ByteRange wholeRange(std::FILE* file) {
    if (std::fseek(file, 0, SEEK_END) != 0) {
        refuse(qt_error_string());
    }
    return {0, std::ftell(file)};
}

bool startsAsJpeg(std::FILE* file) {
    std::array<unsigned char, 2> start{};
    std::rewind(file);
    return std::fread(start.data(), 1, start.size(), file) == start.size() && start[0] == 0xFF &&
           start[1] == 0xD8;
}

/// One JPEG being read.
class JpegReader {
public:
    JpegReader(File file, ByteRange range);
    ~JpegReader() { jpeg_destroy_decompress(&m_info); }
    JpegReader(const JpegReader&) = delete;
    JpegReader& operator=(const JpegReader&) = delete;

    PixelSize readSize();
    JpegPicture read(int limit);

private:
    template <typename Call>
    void run(Call call) {
        if (!m_errors.guarded(call)) {
            refuse(m_errors.reason());
        }
    }
    static JpegReader& of(j_common_ptr info) { return *static_cast<JpegReader*>(info->client_data); }

    void warn();
    void countDamage();
    void checkScans();
    void readHeader();
    ColorModel chooseColors();
    void chooseScale(int limit);
    QByteArray readProfile();
    std::optional<PictureTurn> readTurn() const;
    PixelSize fullSize() const;
    Raster<std::uint8_t> readRows(PixelSize target);
    bool endsInScans();
    bool endsInStrayBytes();

    File m_file;
    JpegSource m_source; ///< after the file, which it reads
    JpegErrors m_errors;
    jpeg_progress_mgr m_progress{};
    jpeg_decompress_struct m_info{};
    bool m_fileEnded = false;
    int m_strayBytes = 0; ///< before the latest marker
    unsigned m_damagedPlaces = 0;
};

JpegReader::JpegReader(File file, ByteRange range)
    : m_file(placedAt(std::move(file), range)), m_source(m_file.get(), range.size()) {
    m_info.err = &m_errors;
    run([this] { jpeg_create_decompress(&m_info); });
    m_info.client_data = this;
    m_errors.emit_message = [](j_common_ptr info, int level) {
        if (level < 0) {
            of(info).warn();
        }
    };
    m_progress.progress_monitor = [](j_common_ptr info) { of(info).checkScans(); };
    m_info.progress = &m_progress;
    m_info.mem->max_memory_to_use = maximumMemory;
    m_info.src = &m_source;
}

/// Decides which of the library's warnings mean that the picture is not there. The library fills missing data
/// with grey and goes on. Like every viewer, this accepts a picture that lacks only its last row of blocks or
/// its end marker, has stray bytes between segments or has a few damaged codes. Called by the library: must
/// not throw.
void JpegReader::warn() {
    switch (m_errors.msg_code) {
    case JWRN_JPEG_EOF:
        m_fileEnded = true;
        break;
    case JWRN_HIT_MARKER:
        if (isRestart(m_info.unread_marker)) {
            countDamage();
        } else if (m_info.input_iMCU_row + 1 < m_info.total_iMCU_rows) {
            m_errors.abandon("the picture data are cut short");
        }
        break;
    case JWRN_EXTRANEOUS_DATA:
        m_strayBytes = m_errors.msg_parm.i[0];
        break;
    case JWRN_HUFF_BAD_CODE:
    case JWRN_ARITH_BAD_CODE:
        countDamage();
        break;
    default:
        break;
    }
}

/// More than one damaged spot per row of blocks is not a flipped bit but noise.
void JpegReader::countDamage() {
    if (++m_damagedPlaces > m_info.total_iMCU_rows) {
        m_errors.abandon("the picture data are damaged");
    }
}

void JpegReader::checkScans() {
    if (m_info.input_scan_number > maximumScans) {
        m_errors.abandon("the picture has too many scans");
    }
}

void JpegReader::readHeader() {
    run([this] { jpeg_read_header(&m_info, TRUE); });
    if (m_info.image_width > maximumSide || m_info.image_height > maximumSide || !isDecodable(fullSize())) {
        refuse(u"the picture is too large"_s);
    }
}

ColorModel JpegReader::chooseColors() {
    switch (m_info.jpeg_color_space) {
    case JCS_GRAYSCALE:
        m_info.out_color_space = JCS_GRAYSCALE;
        return ColorModel::gray;
    case JCS_RGB:
    case JCS_YCbCr:
        m_info.out_color_space = JCS_RGB;
        return ColorModel::rgb;
    case JCS_CMYK:
    case JCS_YCCK:
        m_info.out_color_space = JCS_CMYK;
        return m_info.saw_Adobe_marker ? ColorModel::invertedCmyk : ColorModel::cmyk;
    default:
        refuse(u"its colours are of an unknown kind"_s);
    }
}

/// Chooses the smallest scale of the block transform that leaves the picture large enough: decoding at that
/// size is what makes a rendition cheap.
void JpegReader::chooseScale(int limit) {
    const int full = std::max(static_cast<int>(m_info.image_width), static_cast<int>(m_info.image_height));
    const double wanted = std::min<double>(full, reserve * limit);
    m_info.scale_denom = 8;
    m_info.scale_num =
        static_cast<unsigned>(std::clamp(static_cast<int>(std::ceil(8 * wanted / full)), 1, 8));
}

QByteArray JpegReader::readProfile() {
    JOCTET* bytes = nullptr;
    unsigned length = 0;
    run([&] { jpeg_read_icc_profile(&m_info, &bytes, &length); });
    const std::unique_ptr<JOCTET, decltype(&std::free)> owner(bytes, &std::free);
    return {reinterpret_cast<const char*>(bytes), static_cast<qsizetype>(length)};
}

/// As in other readers, the first EXIF segment counts, even if it has no orientation.
std::optional<PictureTurn> JpegReader::readTurn() const {
    constexpr QByteArrayView signature("Exif\0\0", 6);
    for (const jpeg_marker_struct* marker = m_info.marker_list; marker != nullptr; marker = marker->next) {
        const QByteArrayView payload(marker->data, static_cast<qsizetype>(marker->data_length));
        if (marker->marker == JPEG_APP0 + 1 && payload.startsWith(signature)) {
            return turnOfExif(payload.sliced(signature.size()));
        }
    }
    return std::nullopt;
}

PixelSize JpegReader::fullSize() const {
    return {static_cast<int>(m_info.image_width), static_cast<int>(m_info.image_height)};
}

PixelSize JpegReader::readSize() {
    readHeader();
    return fullSize();
}

JpegPicture JpegReader::read(int limit) {
    run([this] { jpeg_save_markers(&m_info, JPEG_APP0 + 1, 0xFFFF); });
    run([this] { jpeg_save_markers(&m_info, JPEG_APP0 + 2, 0xFFFF); });
    readHeader();
    JpegPicture picture;
    picture.model = chooseColors();
    picture.profile = readProfile();
    picture.turn = readTurn();
    chooseScale(limit);
    run([this] { jpeg_start_decompress(&m_info); });
    picture.pixels = readRows(fittedSize(fullSize(), limit));
    if ((m_fileEnded && endsInScans()) || endsInStrayBytes()) {
        refuse(u"the picture data are cut short"_s);
    }
    return picture;
}

Raster<std::uint8_t> JpegReader::readRows(PixelSize target) {
    const PixelSize decoded{static_cast<int>(m_info.output_width), static_cast<int>(m_info.output_height)};
    AreaScaler<std::uint8_t> scaler(decoded, target, m_info.output_components);
    std::vector<JSAMPLE> buffer(static_cast<std::size_t>(decoded.width) *
                                static_cast<std::size_t>(m_info.output_components));
    JSAMPROW row = buffer.data();
    while (m_info.output_scanline < m_info.output_height) {
        run([this, &row] { jpeg_read_scanlines(&m_info, &row, 1); });
        scaler.addRow(row);
    }
    return scaler.take();
}

/// True when a file without its end marker lacks whole scans. Only a progressive file can show that: it
/// records the bits still to come for each coefficient.
bool JpegReader::endsInScans() {
    if (!m_info.progressive_mode) {
        return m_info.comps_in_scan < m_info.num_components;
    }
    for (int component = 0; component < m_info.num_components; ++component) {
        const int* pendingBits = m_info.coef_bits[component];
        if (std::any_of(pendingBits, pendingBits + DCTSIZE2, [](int bits) { return bits != 0; })) {
            return true;
        }
    }
    return false;
}

/// True when the end marker is missing and more bytes are left than the picture needed.
bool JpegReader::endsInStrayBytes() {
    m_strayBytes = 0;
    // The library does not accept everything that may stand in place of the end marker.
    (void)m_errors.guarded([this] { jpeg_finish_decompress(&m_info); });
    return m_fileEnded && m_strayBytes > maximumStrayBytes;
}

} // namespace

JpegPicture decodeJpeg(const QString& path, int limit) {
    File file = openFile(path);
    const ByteRange range = wholeRange(file.get());
    return JpegReader(std::move(file), range).read(limit);
}

std::optional<JpegPicture> decodeIfJpeg(ImageFile& image, int limit) {
    File file = duplicateOf(image);
    const ByteRange range = wholeRange(file.get());
    if (range.size() == 0) {
        throw ExtractError(ExtractError::Case::cannotOpen, u"the file is empty"_s);
    }
    if (!startsAsJpeg(file.get())) {
        return std::nullopt;
    }
    return JpegReader(std::move(file), range).read(limit);
}

JpegPicture decodeJpeg(const QString& path, ByteRange range, int limit) {
    return JpegReader(openFile(path), range).read(limit);
}

PixelSize jpegSize(const QString& path, ByteRange range) {
    return JpegReader(openFile(path), range).readSize();
}

} // namespace ostrelle
