#include "media/Media.h"

#include <mutex>
#include <string>
#include <utility>

#include "media/demuxing/Demuxer.h"
#include "media/demuxing/PacketScan.h"
#include "media/demuxing/StreamFacts.h"
#include "media/reading/DamageWatch.h"
#include "media/reading/FFmpegImageGenerator.h"
#include "media/reading/FFmpegSoundReader.h"

namespace zeb {
namespace ffmpeg {
namespace {

class FFmpegAsset final : public MediaAsset {
public:
    FFmpegAsset(std::string path, const IsCancelled& isCancelled)
        : m_path(std::move(path)), m_demuxer(std::make_unique<Demuxer>(m_path, isCancelled)) {
        m_fileSize = m_demuxer->fileSize();
        m_facts = containerFacts(*m_demuxer);
        measure(m_facts, *m_demuxer, [&] { return open(isCancelled); });
        m_demuxer->bridge(m_facts.joints);
        for (const VideoStreamFacts& facts : m_facts.videos)
            m_videoTracks.push_back(videoTrack(facts));
        for (const SoundStreamFacts& facts : m_facts.sounds)
            m_soundTracks.push_back(facts.track);
    }

    const std::vector<VideoTrack>& videoTracks() const override { return m_videoTracks; }
    const std::vector<SoundTrack>& soundTracks() const override { return m_soundTracks; }

    std::unique_ptr<ImageGenerator> makeImageGenerator(int threads, IsCancelled isCancelled) const override {
        auto reopen = [path = m_path, size = m_fileSize, joints = m_facts.joints, isCancelled] {
            return open(path, size, joints, isCancelled);
        };
        return std::make_unique<FFmpegImageGenerator>(takeDemuxer(isCancelled), std::move(reopen),
                                                      m_facts.videos.front(), m_facts.origin, threads);
    }

    std::unique_ptr<SoundReader> makeSoundReader(std::size_t track, IsCancelled isCancelled) const override {
        const SoundStreamFacts& facts = m_facts.sounds.at(track);
        return std::make_unique<FFmpegSoundReader>(takeDemuxer(isCancelled), facts, m_facts.origin,
                                                   duration());
    }

private:
    static std::unique_ptr<Demuxer> open(const std::string& path, std::uint64_t size,
                                         const TimeJoints& joints, const IsCancelled& isCancelled) {
        auto demuxer = std::make_unique<Demuxer>(path, isCancelled, size);
        demuxer->bridge(joints);
        return demuxer;
    }
    std::unique_ptr<Demuxer> open(const IsCancelled& isCancelled) const {
        return open(m_path, m_fileSize, m_facts.joints, isCancelled);
    }

    /// Returns the asset's demuxer to the first reader, because opening and probing a file takes time.
    std::unique_ptr<Demuxer> takeDemuxer(const IsCancelled& isCancelled) const {
        std::unique_ptr<Demuxer> demuxer;
        {
            const std::lock_guard lock(m_mutex);
            demuxer = std::move(m_demuxer);
        }
        if (!demuxer) return open(isCancelled);
        demuxer->setCancellation(isCancelled);
        return demuxer;
    }

    std::string m_path;
    std::uint64_t m_fileSize = 0;
    mutable std::mutex m_mutex;
    mutable std::unique_ptr<Demuxer> m_demuxer;
    ContainerFacts m_facts;
    std::vector<VideoTrack> m_videoTracks;
    std::vector<SoundTrack> m_soundTracks;
};

class FFmpegMediaLibrary final : public MediaLibrary {
public:
    std::shared_ptr<const MediaAsset> open(const std::string& path, IsCancelled isCancelled) const override {
        return std::make_shared<const FFmpegAsset>(path, isCancelled);
    }
};

}  // namespace
}  // namespace ffmpeg

std::unique_ptr<MediaLibrary> makeFFmpegMediaLibrary(MediaLogging logging) {
    ffmpeg::routeMessages(logging == MediaLogging::verbose);
    return std::make_unique<ffmpeg::FFmpegMediaLibrary>();
}

}  // namespace zeb
