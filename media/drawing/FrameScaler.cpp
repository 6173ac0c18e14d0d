#include "media/drawing/FrameScaler.h"

#include <zimg.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <new>
#include <string>

#include "media/drawing/PlanarFrame.h"
#include "media/ffmpeg/Libraries.h"

namespace zeb::ffmpeg {
namespace {

constexpr std::size_t alignment = 64;

struct FreeAligned {
    void operator()(void* memory) const noexcept { std::free(memory); }
};
using AlignedMemory = std::unique_ptr<void, FreeAligned>;

std::size_t aligned(std::size_t size) {
    return (size + alignment - 1) / alignment * alignment;
}

AlignedMemory allocateAligned(std::size_t size) {
    AlignedMemory memory(std::aligned_alloc(alignment, std::max(aligned(size), alignment)));
    if (!memory) throw std::bad_alloc();
    return memory;
}

struct FreeGraph {
    void operator()(zimg_filter_graph* graph) const noexcept { zimg_filter_graph_free(graph); }
};

[[noreturn]] void throwScalingError() {
    std::array<char, 256> text{};
    zimg_get_last_error(text.data(), text.size());
    zimg_clear_last_error();
    throw cannotDraw(text.data());
}

zimg_image_format sourceFormat(const ScalingTask& task, const AVPixFmtDescriptor& pixels) {
    zimg_image_format format;
    zimg_image_format_default(&format, ZIMG_API_VERSION);
    const int depth = pixels.comp[0].depth;
    const bool isRGB = (pixels.flags & AV_PIX_FMT_FLAG_RGB) != 0;
    const bool isGrey = pixels.nb_components == 1;
    const auto roundUp = [](int size, int shift) { return (size + (1 << shift) - 1) >> shift << shift; };
    format.width = static_cast<unsigned>(roundUp(task.width, pixels.log2_chroma_w));
    format.height = static_cast<unsigned>(roundUp(task.height, pixels.log2_chroma_h));
    format.active_region = {task.left, task.top, task.right - task.left, task.bottom - task.top};
    format.pixel_type = (pixels.flags & AV_PIX_FMT_FLAG_FLOAT) != 0 ? ZIMG_PIXEL_FLOAT
                        : depth > 8                                 ? ZIMG_PIXEL_WORD
                                                                    : ZIMG_PIXEL_BYTE;
    format.depth = static_cast<unsigned>(depth);
    format.subsample_w = pixels.log2_chroma_w;
    format.subsample_h = pixels.log2_chroma_h;
    format.color_family = isRGB ? ZIMG_COLOR_RGB : isGrey ? ZIMG_COLOR_GREY : ZIMG_COLOR_YUV;
    format.pixel_range = task.fullRange ? ZIMG_RANGE_FULL : ZIMG_RANGE_LIMITED;
    format.chroma_location = static_cast<zimg_chroma_location_e>(task.chromaLocation);
    // The scaler does not convert colours: source and target have the same colour description.
    format.matrix_coefficients = isRGB ? ZIMG_MATRIX_RGB : ZIMG_MATRIX_BT709;
    format.transfer_characteristics = ZIMG_TRANSFER_BT709;
    format.color_primaries = ZIMG_PRIMARIES_BT709;
    if ((pixels.flags & AV_PIX_FMT_FLAG_ALPHA) != 0) format.alpha = ZIMG_ALPHA_STRAIGHT;
    return format;
}

zimg_image_format targetFormat(const ScalingTask& task, const zimg_image_format& source) {
    zimg_image_format format = source;
    format.width = static_cast<unsigned>(task.targetWidth);
    format.height = static_cast<unsigned>(task.targetHeight);
    format.active_region = {0, 0, static_cast<double>(task.targetWidth),
                            static_cast<double>(task.targetHeight)};
    format.pixel_type = ZIMG_PIXEL_WORD;
    format.depth = 16;
    format.subsample_w = format.subsample_h = 0;
    return format;
}

}  // namespace

struct FrameScaler::State {
    ScalingTask task;
    const AVPixFmtDescriptor* pixels = nullptr;  ///< of the planar form
    ComponentFamily family = ComponentFamily::yCbCr;
    bool hasAlpha = false;
    PlanarForm planarForm;
    std::unique_ptr<zimg_filter_graph, FreeGraph> graph;
    AlignedMemory temporary;
    std::array<AlignedMemory, 4> rings;  ///< the latest output rows of each component
    std::size_t stride = 0;
    unsigned ringMask = 0;  ///< row y is in the ring's row y & ringMask
    zimg_image_buffer_const source{};
    const TakeStretch* take = nullptr;  ///< while scaling

    void build();
    void aheadOf(unsigned y, unsigned left, unsigned right) const;
    void handOver(unsigned y, unsigned left, unsigned right) const;
};

/// The pixel format of the planar form is known when the first frame has been converted.
void FrameScaler::State::build() {
    const zimg_image_format sourceForm = sourceFormat(task, *pixels);
    const zimg_image_format target = targetFormat(task, sourceForm);
    family = sourceForm.color_family == ZIMG_COLOR_GREY  ? ComponentFamily::grey
             : sourceForm.color_family == ZIMG_COLOR_RGB ? ComponentFamily::rgb
                                                         : ComponentFamily::yCbCr;
    hasAlpha = sourceForm.alpha != ZIMG_ALPHA_NONE;
    zimg_graph_builder_params parameters;
    zimg_graph_builder_params_default(&parameters, ZIMG_API_VERSION);
    parameters.resample_filter = ZIMG_RESIZE_LANCZOS;
    parameters.filter_param_a = 3;
    parameters.resample_filter_uv = ZIMG_RESIZE_LANCZOS;
    parameters.filter_param_a_uv = 3;
    parameters.dither_type = ZIMG_DITHER_NONE;
    parameters.cpu_type = ZIMG_CPU_AUTO_64B;
    graph.reset(zimg_filter_graph_build(&sourceForm, &target, &parameters));
    if (!graph) throwScalingError();
    std::size_t size = 0;
    unsigned rows = 0;
    if (zimg_filter_graph_get_tmp_size(graph.get(), &size) != 0 ||
        zimg_filter_graph_get_output_buffering(graph.get(), &rows) != 0) {
        throwScalingError();
    }
    temporary = allocateAligned(size);
    stride = aligned(static_cast<std::size_t>(task.targetWidth) * sizeof(std::uint16_t));
    const unsigned ringRows = std::bit_ceil(std::min(rows, static_cast<unsigned>(task.targetHeight)));
    ringMask = ringRows - 1;
    for (std::size_t i = 0; i < rings.size(); ++i) {
        const bool isUsed = i == 0 || (i < 3 && family != ComponentFamily::grey) || (i == 3 && hasAlpha);
        if (isUsed) rings[i] = allocateAligned(stride * ringRows);
    }
}

/// Prefetches rows a little below source row `y`, which is read next. Decoded frames are seldom in a cache,
/// and rows are too far apart for hardware prefetching.
void FrameScaler::State::aheadOf(unsigned y, unsigned left, unsigned right) const {
    constexpr std::size_t cacheLine = 64;
    for (int i = 0; i < pixels->nb_components; ++i) {
        const bool isChroma = (i == 1 || i == 2) && family == ComponentFamily::yCbCr;
        const int shiftDown = isChroma ? pixels->log2_chroma_h : 0;
        const int shiftAcross = isChroma ? pixels->log2_chroma_w : 0;
        const int rowsAtOnce = 1 << (pixels->log2_chroma_h - shiftDown);
        const auto bytes = static_cast<std::size_t>(pixels->comp[i].step);
        const std::size_t begin = (left >> shiftAcross) * bytes, end = (right >> shiftAcross) * bytes;
        const int first = static_cast<int>(y >> shiftDown) + 2 * rowsAtOnce;
        const int behind = std::min(first + rowsAtOnce, task.height >> shiftDown);
        for (int row = first; row < behind; ++row) {
            const char* data = static_cast<const char*>(source.plane[i].data) + source.plane[i].stride * row;
            for (std::size_t at = begin; at < end; at += cacheLine)
                __builtin_prefetch(data + at);
        }
    }
}

void FrameScaler::State::handOver(unsigned y, unsigned left, unsigned right) const {
    ScaledStretch stretch;
    stretch.y = static_cast<int>(y);
    stretch.begin = static_cast<int>(left);
    stretch.end = static_cast<int>(right);
    for (std::size_t i = 0; i < rings.size(); ++i) {
        if (!rings[i]) continue;
        const auto* row = static_cast<const std::uint8_t*>(rings[i].get()) + stride * (y & ringMask);
        stretch.components[i] = reinterpret_cast<const std::uint16_t*>(row) + left;
    }
    (*take)(stretch);
}

FrameScaler::FrameScaler(const ScalingTask& task) : m_state(std::make_unique<State>()) {
    m_state->task = task;
}

FrameScaler::~FrameScaler() = default;

const ScalingTask& FrameScaler::task() const noexcept {
    return m_state->task;
}

void FrameScaler::load(const AVFrame& frame) {
    State& state = *m_state;
    const AVFrame& planar = state.planarForm.of(frame);
    if (!state.graph) {
        state.pixels = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(planar.format));
        state.build();
    }
    state.source.version = ZIMG_API_VERSION;
    for (int i = 0; i < state.pixels->nb_components; ++i) {
        const int plane = state.pixels->comp[i].plane;
        state.source.plane[i].data = planar.data[plane];
        state.source.plane[i].stride = planar.linesize[plane];
        state.source.plane[i].mask = ZIMG_BUFFER_MAX;
    }
}

void FrameScaler::scale(const TakeStretch& take) {
    State& state = *m_state;
    state.take = &take;
    zimg_image_buffer target{};
    target.version = ZIMG_API_VERSION;
    for (std::size_t i = 0; i < state.rings.size(); ++i) {
        target.plane[i].data = state.rings[i].get();
        target.plane[i].stride = static_cast<std::ptrdiff_t>(state.stride);
        target.plane[i].mask = state.ringMask;
    }
    const auto aheadOf = [](void* user, unsigned y, unsigned left, unsigned right) {
        static_cast<const State*>(user)->aheadOf(y, left, right);
        return 0;
    };
    const auto handOver = [](void* user, unsigned y, unsigned left, unsigned right) {
        static_cast<const State*>(user)->handOver(y, left, right);
        return 0;
    };
    if (zimg_filter_graph_process(state.graph.get(), &state.source, &target, state.temporary.get(), aheadOf,
                                  &state, handOver, &state) != 0) {
        throwScalingError();
    }
}

ComponentFamily FrameScaler::family() const noexcept {
    return m_state->family;
}

bool FrameScaler::hasAlpha() const noexcept {
    return m_state->hasAlpha;
}

}  // namespace zeb::ffmpeg
