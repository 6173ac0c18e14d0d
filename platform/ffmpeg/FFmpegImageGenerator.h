#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/Media.h"
#include "platform/ffmpeg/FramePicture.h"
#include "platform/ffmpeg/FrameSource.h"

namespace zeb::ffmpeg {

/// Grabs pictures of one video stream by time.
class FFmpegImageGenerator final : public ImageGenerator {
public:
    /// `demuxer`, opened on `path`, must not have been read from yet.
    FFmpegImageGenerator(std::string path, std::unique_ptr<Demuxer> demuxer, const VideoStreamFacts& facts,
                         double origin, int threads, IsCancelled isCancelled);

    void expect(const GrabSchedule& schedule) override;
    std::shared_ptr<const Picture> copyImage(MediaTime time) override;
    TimedPicture copyKeyImage(MediaTime time) override;

private:
    struct Shown {
        double time = 0;
        std::shared_ptr<const Picture> picture;
    };

    void start(std::unique_ptr<Demuxer> demuxer);
    void advance();
    void restart(double target);
    void reopen();

    std::string m_path;
    VideoStreamFacts m_facts;
    double m_origin;
    int m_threads;
    IsCancelled m_isCancelled;
    std::shared_ptr<DrawingTools> m_tools = std::make_shared<DrawingTools>();
    std::unique_ptr<FrameSource> m_source;
    std::optional<Shown> m_current;    ///< the picture on screen at the last grab
    std::optional<TimedFrame> m_next;  ///< the one after it
    std::optional<Shown> m_key;        ///< the last key picture that was grabbed
    bool m_isAtKey = false;            ///< `m_source` was left at a key picture
    bool m_currentIsFirst = false;     ///< nothing comes before `m_current`
};

}  // namespace zeb::ffmpeg
