#include "Media/ColorDescription.h"

namespace stillwick {

namespace {

bool isHigh(const AVFrame& frame) {
    constexpr int highWidth = 1280;
    constexpr int highHeight = 720;
    return frame.width >= highWidth || frame.height >= highHeight;
}

bool isRgb(const AVPixFmtDescriptor& format) {
    return (format.flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) != 0;
}

bool isGrey(const AVPixFmtDescriptor& format) {
    return !isRgb(format) && format.nb_components < 3;
}

bool isJpegFormat(int format) {
    switch (format) {
    case AV_PIX_FMT_YUVJ411P:
    case AV_PIX_FMT_YUVJ420P:
    case AV_PIX_FMT_YUVJ422P:
    case AV_PIX_FMT_YUVJ440P:
    case AV_PIX_FMT_YUVJ444P:
        return true;
    default:
        return false;
    }
}

bool isWide(AVColorPrimaries primaries) {
    return primaries == AVCOL_PRI_BT2020 || primaries == AVCOL_PRI_SMPTE431 ||
           primaries == AVCOL_PRI_SMPTE432;
}

AVColorSpace matrixOf(const AVFrame& frame, bool isHdr) {
    switch (frame.colorspace) {
    case AVCOL_SPC_UNSPECIFIED:
    case AVCOL_SPC_RESERVED:
    case AVCOL_SPC_RGB: // of a YUV format: a wrong tag
        if (isHdr)
            return AVCOL_SPC_BT2020_NCL;
        return isHigh(frame) ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
    default:
        return frame.colorspace;
    }
}

bool isFullRange(const VideoFrame& frame, const AVPixFmtDescriptor& format) {
    const AVFrame& picture = frame.avFrame();
    if (isRgb(format) || isJpegFormat(picture.format))
        return true;
    if (picture.color_range != AVCOL_RANGE_UNSPECIFIED)
        return picture.color_range == AVCOL_RANGE_JPEG;
    return isGrey(format) && frame.track().isGreyFullRange;
}

} // namespace

ColorDescription colorOf(const VideoFrame& frame) {
    const AVFrame& picture = frame.avFrame();
    const AVPixFmtDescriptor& format = *av_pix_fmt_desc_get(AVPixelFormat(picture.format));
    ColorDescription color;
    const bool isHdr =
        picture.color_trc == AVCOL_TRC_SMPTE2084 || picture.color_trc == AVCOL_TRC_ARIB_STD_B67;
    color.matrix = isRgb(format) ? AVCOL_SPC_RGB : matrixOf(picture, isHdr);
    color.isFullRange = isFullRange(frame, format);
    if (isHdr) {
        color.transfer = picture.color_trc;
        color.primaries = AVCOL_PRI_BT2020;
    }
    if (isWide(picture.color_primaries))
        color.primaries = picture.color_primaries;
    else if (isHdr && picture.color_primaries != AVCOL_PRI_UNSPECIFIED)
        color.primaries = AVCOL_PRI_BT709;
    if (picture.chroma_location != AVCHROMA_LOC_UNSPECIFIED)
        color.chromaLocation = picture.chroma_location;
    return color;
}

} // namespace stillwick
