#include "Platform/MediaLibrary/PictureScaler.h"

extern "C" {
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstring>

namespace orvane::platform {

namespace {

constexpr std::size_t pixelBytes = 4;
/// Standard definition has at most this many lines; a larger picture that does not state its colours is HD.
constexpr int mostLinesOfSD = 576;

/// swscale's number of the coefficients.
int matrixOf(const AVFrame& frame) {
    switch (frame.colorspace) {
    case AVCOL_SPC_BT709:
        return SWS_CS_ITU709;
    case AVCOL_SPC_BT470BG:
    case AVCOL_SPC_SMPTE170M:
        return SWS_CS_ITU601;
    case AVCOL_SPC_SMPTE240M:
        return SWS_CS_SMPTE240M;
    case AVCOL_SPC_FCC:
        return SWS_CS_FCC;
    case AVCOL_SPC_BT2020_NCL:
    case AVCOL_SPC_BT2020_CL:
        return SWS_CS_BT2020;
    default:
        return frame.height > mostLinesOfSD ? SWS_CS_ITU709 : SWS_CS_ITU601;
    }
}

/// Formats that libav has twice, once for each range.
struct PlainFormat {
    AVPixelFormat format;
    bool isFullRange;
};
PlainFormat plainFormat(const AVFrame& frame) {
    const bool isFull = frame.color_range == AVCOL_RANGE_JPEG;
    switch (frame.format) {
    case AV_PIX_FMT_YUVJ420P:
        return {AV_PIX_FMT_YUV420P, true};
    case AV_PIX_FMT_YUVJ422P:
        return {AV_PIX_FMT_YUV422P, true};
    case AV_PIX_FMT_YUVJ444P:
        return {AV_PIX_FMT_YUV444P, true};
    case AV_PIX_FMT_YUVJ440P:
        return {AV_PIX_FMT_YUV440P, true};
    case AV_PIX_FMT_YUVJ411P:
        return {AV_PIX_FMT_YUV411P, true};
    default:
        return {static_cast<AVPixelFormat>(frame.format), isFull};
    }
}

/// Brightness of a frame, scaled to 8 bits.
class Luma {
  public:
    explicit Luma(const AVFrame& frame)
        : frame_(frame), format_(av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format))) {}
    bool isThere() const {
        constexpr unsigned other = AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BITSTREAM |
                                   AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_BE | AV_PIX_FMT_FLAG_FLOAT;
        return format_ != nullptr && (format_->flags & other) == 0;
    }
    int at(int x, int y) const {
        const AVComponentDescriptor& luma = format_->comp[0];
        const std::uint8_t* place = frame_.data[luma.plane] +
                                    std::ptrdiff_t{y} * frame_.linesize[luma.plane] +
                                    std::ptrdiff_t{x} * luma.step + luma.offset;
        if (luma.depth <= 8) return *place >> luma.shift;
        std::uint16_t value = 0;
        std::memcpy(&value, place, sizeof value);
        return value >> luma.shift >> (luma.depth - 8);
    }

  private:
    const AVFrame& frame_;
    const AVPixFmtDescriptor* const format_;
};

/// Whether the two fields of the frame show different times: neighbouring lines differ, and lines of one
/// field do not. Progressive pictures are often stored as interlaced ones and look best as a whole.
bool isCombed(const AVFrame& frame) {
    constexpr int lineStep = 6, columnStep = 4, contrast = 15 * 15;
    constexpr int least = 200; // one sample of this many
    const Luma luma(frame);
    if (!luma.isThere()) return false;
    int samples = 0, betweenFields = 0, withinField = 0;
    const auto isPeak = [](int above, int here, int below) {
        return (above - here) * (below - here) > contrast;
    };
    for (int y = 0; y + 4 < frame.height; y += lineStep)
        for (int x = 0; x < frame.width; x += columnStep, ++samples) {
            const int first = luma.at(x, y), third = luma.at(x, y + 2);
            betweenFields += isPeak(first, luma.at(x, y + 1), third) ? 1 : 0;
            withinField += isPeak(first, third, luma.at(x, y + 4)) ? 1 : 0;
        }
    return betweenFields > samples / least && betweenFields > 2 * withinField;
}

void multiplyByAlpha(std::uint8_t* pixels, std::size_t count) {
    constexpr unsigned most = 255;
    for (; count > 0; --count, pixels += pixelBytes) {
        const unsigned alpha = pixels[3];
        if (alpha == most) continue;
        for (int channel = 0; channel < 3; ++channel)
            pixels[channel] = static_cast<std::uint8_t>((pixels[channel] * alpha + most / 2) / most);
    }
}

/// `from` has `size` before the turn.
void turn(const std::uint8_t* from, std::uint8_t* into, PictureSize size,
          const PictureOrientation& orientation) {
    const bool isSideways = orientation.quarterTurns % 2 != 0;
    const int width = isSideways ? size.height : size.width, height = isSideways ? size.width : size.height;
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x, into += pixelBytes) {
            const std::array<std::array<int, 2>, 4> places{
                {{x, y}, {y, height - 1 - x}, {width - 1 - x, height - 1 - y}, {width - 1 - y, x}}};
            auto [column, row] = places[static_cast<std::size_t>(orientation.quarterTurns)];
            if (orientation.isMirrored) column = width - 1 - column;
            std::memcpy(into, from + (std::ptrdiff_t{row} * width + column) * std::ptrdiff_t{pixelBytes},
                        pixelBytes);
        }
}

int rounded(double length) { return std::max(static_cast<int>(std::lround(length)), 1); }

} // namespace

PictureOrientation PictureOrientation::of(const std::int32_t* matrix) {
    if (matrix == nullptr) return {};
    // The axes of the stored picture on the screen, whose y axis points down: rows of the matrix.
    double rightX = matrix[0], rightY = matrix[1];
    const double downX = matrix[3], downY = matrix[4];
    const double area = rightX * downY - rightY * downX;
    if (area == 0) return {};
    PictureOrientation result;
    result.isMirrored = area < 0;
    if (result.isMirrored) {
        rightX = -rightX;
        rightY = -rightY;
    }
    constexpr double quarter = 1.5707963267948966;
    result.quarterTurns = static_cast<int>(std::lround(std::atan2(rightY, rightX) / quarter) + 4) % 4;
    return result;
}

PictureScaler::PictureScaler() = default;
PictureScaler::~PictureScaler() = default;

void PictureScaler::Free::operator()(SwsContext* context) const { sws_freeContext(context); }

PictureSize PictureScaler::sizeOf(int width, int height, AVRational pixelAspect,
                                  const PictureOrientation& orientation, PictureSize limit) {
    double w = width, h = height;
    // An aspect farther from square is an error of the file.
    constexpr double mostAspect = 8;
    if (pixelAspect.num > 0 && pixelAspect.den > 0)
        if (const double aspect = av_q2d(pixelAspect); aspect < mostAspect && aspect > 1 / mostAspect)
            w *= aspect;
    if (orientation.quarterTurns % 2 != 0) std::swap(w, h);
    double scale = 1;
    if (limit.width > 0) scale = std::min(scale, limit.width / w);
    if (limit.height > 0) scale = std::min(scale, limit.height / h);
    return {rounded(w * scale), rounded(h * scale)};
}

bool PictureScaler::prepare(const Setting& setting) {
    if (context_ && setting == setting_) return true;
    const auto format = static_cast<AVPixelFormat>(setting.format);
    context_.reset(sws_getContext(setting.width, setting.height, format, setting.size.width,
                                  setting.size.height, AV_PIX_FMT_BGRA, SWS_BILINEAR, nullptr, nullptr,
                                  nullptr));
    if (!context_) return false;
    constexpr int unity = 1 << 16;
    // Sources that are already red, green and blue refuse this, and do not need it.
    sws_setColorspaceDetails(context_.get(), sws_getCoefficients(setting.matrix), setting.isFullRange ? 1 : 0,
                             sws_getCoefficients(SWS_CS_DEFAULT), 1, 0, unity, unity);
    setting_ = setting;
    return true;
}

bool PictureScaler::convert(const AVFrame& frame, const PictureOrientation& orientation, PictureSize size,
                            std::uint8_t* into) {
    if (frame.data[0] == nullptr || frame.width <= 0 || frame.height <= 0) return false;
    const auto [format, isFullRange] = plainFormat(frame);
    const bool isTurned = orientation.quarterTurns != 0 || orientation.isMirrored;
    const PictureSize unrotated =
        orientation.quarterTurns % 2 != 0 ? PictureSize{size.height, size.width} : size;
    std::array<const std::uint8_t*, 4> planes{frame.data[0], frame.data[1], frame.data[2], frame.data[3]};
    std::array<int, 4> strides{frame.linesize[0], frame.linesize[1], frame.linesize[2], frame.linesize[3]};
    int lines = frame.height;
    constexpr int leastLines = 8;
    if (frame.interlaced_frame != 0 && lines >= leastLines && isCombed(frame)) {
        // The field that was recorded first, scaled to the whole height.
        const AVPixFmtDescriptor* description = av_pix_fmt_desc_get(format);
        const bool hasPalette = (description->flags & AV_PIX_FMT_FLAG_PAL) != 0;
        for (std::size_t plane = 0; plane < planes.size(); ++plane) {
            if (planes[plane] == nullptr || (hasPalette && plane == 1)) continue;
            if (frame.top_field_first == 0) planes[plane] += strides[plane];
            strides[plane] *= 2;
        }
        lines /= 2;
    }
    if (!prepare({frame.width, lines, format, unrotated, matrixOf(frame), isFullRange})) return false;
    const std::size_t pixels = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
    if (isTurned) unrotated_.resize(pixels * pixelBytes);
    std::uint8_t* const rows = isTurned ? unrotated_.data() : into;
    const std::array<std::uint8_t*, 4> target{rows, nullptr, nullptr, nullptr};
    const std::array<int, 4> targetStrides{unrotated.width * static_cast<int>(pixelBytes), 0, 0, 0};
    if (sws_scale(context_.get(), planes.data(), strides.data(), 0, lines, target.data(),
                  targetStrides.data()) != unrotated.height)
        return false;
    if (isTurned) turn(rows, into, size, orientation);
    const AVPixFmtDescriptor* description = av_pix_fmt_desc_get(format);
    if (description != nullptr && (description->flags & AV_PIX_FMT_FLAG_ALPHA) != 0)
        multiplyByAlpha(into, pixels);
    return true;
}

} // namespace orvane::platform
