#pragma once

#include <memory>
#include <optional>

#include "media/Media.h"
#include "media/drawing/FramePicture.h"
#include "media/reading/FrameSource.h"

namespace zeb::ffmpeg {

/// Grabs pictures of one video stream by time.
class FFmpegImageGenerator final : public ImageGenerator {
public:
    /// No packet of `demuxer` has been read yet; `reopen` opens the same file again.
    FFmpegImageGenerator(std::unique_ptr<Demuxer> demuxer, OpenDemuxer reopen, const VideoStreamFacts& facts,
                         double origin, int threads);

    void expect(const GrabSchedule& schedule) override;
    std::shared_ptr<const Picture> copyImage(MediaTime time) override;
    TimedPicture copyNearbyImage(MediaTime time, int pictures) override;

private:
    struct Shown {
        double time = 0;
        std::shared_ptr<const Picture> picture;
    };

    void start(std::unique_ptr<Demuxer> demuxer);
    void advance();
    void restart(double target);
    void startAgain();

    OpenDemuxer m_reopen;
    VideoStreamFacts m_facts;
    double m_origin;
    int m_threads;
    std::shared_ptr<DrawingTools> m_tools = std::make_shared<DrawingTools>();
    std::unique_ptr<FrameSource> m_source;
    std::optional<Shown> m_current;    ///< the picture on screen at the last grab
    std::optional<TimedFrame> m_next;  ///< the picture after `m_current`
    bool m_isElsewhere = false;        ///< `m_source` is at a position from which nothing can be decoded

    /// The last picture that `copyNearbyImage` found.
    struct Nearby {
        double keyTime = 0;
        int pictures = 0;
        bool isLast = false;  ///< no later picture is reachable from this key frame within `pictures`
        TimedPicture picture;
    };
    std::optional<Nearby> m_nearby;
    bool m_currentIsFirst = false;  ///< `m_current` is the first picture of the stream
};

}  // namespace zeb::ffmpeg
