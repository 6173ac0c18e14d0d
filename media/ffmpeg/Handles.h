#pragma once

// Smart pointers for objects of the FFmpeg libraries. Private to this folder.

#include <memory>

struct AVAudioFifo;
struct AVCodecContext;
struct AVFilterGraph;
struct AVFormatContext;
struct AVFrame;
struct AVPacket;
struct SwrContext;
struct SwsContext;

namespace zeb::ffmpeg {

struct Deleter {
    void operator()(AVAudioFifo* fifo) const noexcept;
    void operator()(AVCodecContext* context) const noexcept;
    void operator()(AVFilterGraph* graph) const noexcept;
    void operator()(AVFrame* frame) const noexcept;
    void operator()(AVPacket* packet) const noexcept;
    void operator()(SwrContext* context) const noexcept;
    void operator()(SwsContext* context) const noexcept;
};

using AudioFifo = std::unique_ptr<AVAudioFifo, Deleter>;
using CodecContext = std::unique_ptr<AVCodecContext, Deleter>;
using FilterGraph = std::unique_ptr<AVFilterGraph, Deleter>;
using Frame = std::unique_ptr<AVFrame, Deleter>;
using Packet = std::unique_ptr<AVPacket, Deleter>;
using Resampler = std::unique_ptr<SwrContext, Deleter>;
using Converter = std::unique_ptr<SwsContext, Deleter>;

/// New empty objects; throw `std::bad_alloc`.
Frame makeFrame();
Packet makePacket();

}  // namespace zeb::ffmpeg
