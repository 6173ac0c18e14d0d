#include "media/ffmpeg/Handles.h"

#include <new>

#include "media/ffmpeg/FilterLibrary.h"
#include "media/ffmpeg/Libraries.h"

namespace zeb::ffmpeg {

void Deleter::operator()(AVAudioFifo* fifo) const noexcept {
    av_audio_fifo_free(fifo);
}
void Deleter::operator()(AVCodecContext* context) const noexcept {
    avcodec_free_context(&context);
}
void Deleter::operator()(AVFilterGraph* graph) const noexcept {
    FilterLibrary::get().graphFree(&graph);  // a graph exists, so the library is loaded
}
void Deleter::operator()(AVFrame* frame) const noexcept {
    av_frame_free(&frame);
}
void Deleter::operator()(AVPacket* packet) const noexcept {
    av_packet_free(&packet);
}
void Deleter::operator()(SwrContext* context) const noexcept {
    swr_free(&context);
}
void Deleter::operator()(SwsContext* context) const noexcept {
    sws_freeContext(context);
}

Frame makeFrame() {
    Frame frame(av_frame_alloc());
    if (!frame) throw std::bad_alloc();
    return frame;
}

Packet makePacket() {
    Packet packet(av_packet_alloc());
    if (!packet) throw std::bad_alloc();
    return packet;
}

}  // namespace zeb::ffmpeg
