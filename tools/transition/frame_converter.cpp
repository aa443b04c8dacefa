#include "frame_converter.h"

#include <algorithm>
#include <new>

#include "error.h"

extern "C" {
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

namespace zepbmp::transition {

namespace {

constexpr int kHighDefinitionLines = 720;

/// Whether a field's lines are those of every plane, so that every second line of each makes up the field.
bool has_fields(const PictureView& view) {
    const AVPixFmtDescriptor* const format = av_pix_fmt_desc_get(view.format);
    if (format->flags & AV_PIX_FMT_FLAG_PAL)
        return false;
    return format->log2_chroma_h == 0 || view.height % (2 << format->log2_chroma_h) == 0;
}

/// Without scaling, chroma that is shared by two columns is taken as it is. Lines that share it get the same value,
/// which the way back averages, so that a picture which no effect touches comes out as it went in.
int scaler_flags(const PictureView& from, const PictureView& to) {
    const AVPixFmtDescriptor* const format = av_pix_fmt_desc_get(from.format);
    const bool same_size = from.width == to.width && from.height == to.height;
    const bool shared = format->log2_chroma_w == 1 && format->log2_chroma_h <= 1;
    if (same_size && shared && to.width % 2 == 0)
        return SWS_POINT;
    return SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP;
}

bool same_kind(const PictureView& one, const PictureView& other) {
    return one.width == other.width && one.height == other.height && one.format == other.format &&
           one.full_range == other.full_range && one.matrix == other.matrix;
}

}  // namespace

AVColorSpace known_matrix(AVColorSpace matrix, int height) {
    switch (matrix) {
        case AVCOL_SPC_BT709:
        case AVCOL_SPC_FCC:
        case AVCOL_SPC_BT470BG:
        case AVCOL_SPC_SMPTE170M:
        case AVCOL_SPC_SMPTE240M:
        case AVCOL_SPC_BT2020_NCL: return matrix;
        default: return height >= kHighDefinitionLines ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
    }
}

LumaWeights luma_weights(AVColorSpace matrix) {
    switch (matrix) {
        case AVCOL_SPC_BT709: return {0.2126, 0.0722};
        case AVCOL_SPC_FCC: return {0.30, 0.11};
        case AVCOL_SPC_SMPTE240M: return {0.212, 0.087};
        case AVCOL_SPC_BT2020_NCL: return {0.2627, 0.0593};
        default: return {0.299, 0.114};
    }
}

PictureView PictureView::field(int parity) const {
    PictureView view = *this;
    for (int i = 0; i < 4; ++i) {
        if (!view.data[i])
            continue;
        view.data[i] += parity * view.stride[i];
        view.stride[i] *= 2;
    }
    view.height = (height + 1 - parity) / 2;
    return view;
}

PictureView view_of(const AVFrame& frame) {
    PictureView view;
    std::copy_n(frame.data, 4, view.data);
    std::copy_n(frame.linesize, 4, view.stride);
    view.width = frame.width;
    view.height = frame.height;
    view.format = static_cast<AVPixelFormat>(frame.format);
    view.full_range = frame.color_range == AVCOL_RANGE_JPEG;
    view.matrix = known_matrix(frame.colorspace, frame.height);
    return view;
}

PictureView view_of(const Bitmap& bitmap, int width, AVColorSpace matrix) {
    PictureView view;
    view.data[0] = bitmap.record()->pixels;
    view.stride[0] = bitmap.pitch();
    view.width = width;
    view.height = bitmap.height();
    view.format = AV_PIX_FMT_YUYV422;
    view.matrix = matrix;
    return view;
}

void Scaler::convert(Context& context, const PictureView& from, const PictureView& to) {
    if (!context.sws || !same_kind(context.from, from) || !same_kind(context.to, to)) {
        context.sws.reset(sws_alloc_context());
        SwsContext* const sws = context.sws.get();
        if (!sws)
            throw std::bad_alloc();
        av_opt_set_int(sws, "srcw", from.width, 0);
        av_opt_set_int(sws, "srch", from.height, 0);
        av_opt_set_int(sws, "src_format", from.format, 0);
        av_opt_set_int(sws, "src_range", from.full_range, 0);
        av_opt_set_int(sws, "dstw", to.width, 0);
        av_opt_set_int(sws, "dsth", to.height, 0);
        av_opt_set_int(sws, "dst_format", to.format, 0);
        av_opt_set_int(sws, "dst_range", to.full_range, 0);
        av_opt_set_int(sws, "sws_flags", scaler_flags(from, to), 0);
        int* unused_table = nullptr;
        int from_range = 0, to_range = 0, brightness = 0, contrast = 0, saturation = 0;
        // The ranges that the scaler settled on are kept: some formats imply one.
        if (sws_init_context(sws, nullptr, nullptr) < 0 ||
            sws_getColorspaceDetails(sws, &unused_table, &from_range, &unused_table, &to_range, &brightness, &contrast,
                                     &saturation) < 0 ||
            sws_setColorspaceDetails(sws, sws_getCoefficients(from.matrix), from_range, sws_getCoefficients(to.matrix),
                                     to_range, brightness, contrast, saturation) < 0) {
            context.sws.reset();
            throw Error("pictures of format " + std::string(av_get_pix_fmt_name(from.format)) + " cannot be converted");
        }
        context.from = from;
        context.to = to;
    }
    if (sws_scale(context.sws.get(), from.data, from.stride, 0, from.height, to.data, to.stride) != to.height)
        throw Error("a picture could not be converted");
}

void Scaler::convert(const PictureView& from, const PictureView& to) { convert(contexts_[0], from, to); }

void Scaler::convert_fields(const PictureView& from, const PictureView& to) {
    if (!has_fields(from) || !has_fields(to)) {
        convert(contexts_[0], from, to);
        return;
    }
    for (int parity = 0; parity < 2; ++parity)
        convert(contexts_[parity], from.field(parity), to.field(parity));
}

void FrameConverter::convert(const AVFrame& frame, Bitmap& to) {
    const PictureView from_view = view_of(frame);
    const PictureView to_view = view_of(to, width_, matrix_);
    switch (mode_) {
        case Mode::kWhole: scaler_.convert(from_view, to_view); break;
        case Mode::kFields: scaler_.convert_fields(from_view, to_view); break;
        case Mode::kDeinterlace: {
            if (!native_ || native_->width() < frame.width || native_->width() > frame.width + 1 ||
                native_->height() != frame.height)
                native_.emplace(even(frame.width), frame.height, Format::yuy2);
            const PictureView native_view = view_of(*native_, frame.width, matrix_);
            native_scaler_.convert_fields(from_view, native_view);
            interporate(*native_, *native_, Parity::even);
            scaler_.convert(native_view, to_view);
            break;
        }
    }
    if (to.width() > width_)
        for (int y = 0; y < to.height(); ++y)
            *to.pointer(width_, y) = *to.pointer(width_ - 1, y);
}

}  // namespace zepbmp::transition
