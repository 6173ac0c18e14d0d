#include "platform/ffmpeg/GrabPlanner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

namespace zeb::ffmpeg {
namespace {

constexpr double tolerance = 0.001;

/// A film as packets in decoding order, made at random: groups with pictures of two or three levels between
/// anchors, constant or variable rate, decode times that containers give, give late or leave out.
struct Film {
    std::vector<PlannedPacket> packets;
    GrabSchedule schedule;
};

Film randomFilm(std::mt19937& random) {
    const auto below = [&random](int end) { return static_cast<int>(random() % static_cast<unsigned>(end)); };
    Film film;
    const int count = 1 + below(120);
    const bool isVariable = below(3) == 0;
    const double period =
        std::vector{0.02, 1 / 24.0, 0.04, 1001 / 30000.0, 0.5}[static_cast<std::size_t>(below(5))];
    std::vector<double> times;
    double time = below(4) == 0 ? 1.37 : below(4) == 0 ? -0.31 : 0;
    for (int i = 0; i < count; ++i) {
        times.push_back(time);
        time += isVariable ? 0.004 + 0.09 * below(100) / 50 : period;
    }
    // Display order to decoding order: every anchor is followed by the pictures between it and the one
    // before, halved recursively.
    std::vector<int> order;
    const std::function<void(int, int)> between = [&](int first, int end) {
        if (first >= end) return;
        const int middle = (first + end) / 2;
        order.push_back(middle);
        between(first, middle);
        between(middle + 1, end);
    };
    std::vector<bool> starts(times.size());
    for (int next = 0; next < count;) {
        const bool startsGroup = next == 0 || below(4) == 0;
        // A group that is closed to the left has no pictures displayed before its first.
        const int skipped = startsGroup ? 0 : std::min(below(8), count - 1 - next);
        starts[static_cast<std::size_t>(next + skipped)] = startsGroup;
        order.push_back(next + skipped);
        between(next, next + skipped);
        next += skipped + 1;
    }
    const bool hasDecodeTimes = below(5) != 0;
    const double slack = below(3) * period;
    for (std::size_t i = 0; i < order.size(); ++i) {
        double earliest = times[static_cast<std::size_t>(order[i])];
        for (std::size_t j = i; j < order.size(); ++j) {
            earliest = std::min(earliest, times[static_cast<std::size_t>(order[j])]);
        }
        PlannedPacket packet;
        packet.displayTime = times[static_cast<std::size_t>(order[i])];
        if (hasDecodeTimes && below(10) != 0) packet.decodeTime = earliest - slack;
        packet.startsGroup = starts[static_cast<std::size_t>(order[i])];
        packet.isShown = below(25) != 0;
        packet.size = 1000;
        film.packets.push_back(packet);
    }
    film.schedule.perSecond = std::vector{1, 2, 3, 10, 24, 25, 30, 60}[static_cast<std::size_t>(below(8))];
    const double length = std::max(times.back(), 0.0) + period * below(3);
    film.schedule.count =
        static_cast<std::int64_t>(std::ceil(std::max(length, 0.1))) * film.schedule.perSecond;
    film.schedule.last = std::max(length - 1 / 600.0, 0.0);
    return film;
}

/// The packet that a grab shows: the last shown one whose time is not after it; without one, the first; -1:
/// none.
int selected(const std::vector<PlannedPacket>& packets, double time) {
    int best = -1, first = -1;
    for (int i = 0; i < static_cast<int>(packets.size()); ++i) {
        const PlannedPacket& packet = packets[static_cast<std::size_t>(i)];
        const auto timeOf = [&packets](int index) {
            return packets[static_cast<std::size_t>(index)].displayTime;
        };
        if (!packet.isShown) continue;
        if (first < 0 || packet.displayTime < timeOf(first)) first = i;
        if (packet.displayTime <= time + tolerance && (best < 0 || packet.displayTime >= timeOf(best)))
            best = i;
    }
    return best >= 0 ? best : first;
}

TEST(GrabPlanner, NeverGivesUpAPictureThatAGrabShows) {
    int dropped = 0, skippable = 0;
    for (unsigned seed = 0; seed < 3000; ++seed) {
        std::mt19937 random(seed);
        const Film film = randomFilm(random);
        GrabPlanner planner(film.schedule, tolerance);
        std::vector<PacketUse> uses;
        for (const PlannedPacket& packet : film.packets) {
            planner.add(packet);
            while (planner.isReady())
                uses.push_back(planner.take());
        }
        planner.end();
        while (planner.isReady())
            uses.push_back(planner.take());
        ASSERT_EQ(uses.size(), film.packets.size());

        for (std::int64_t i = 0; i < film.schedule.count; ++i) {
            const int needed = selected(film.packets, film.schedule.at(i).seconds());
            if (needed < 0) continue;
            ASSERT_EQ(uses[static_cast<std::size_t>(needed)], PacketUse::decode)
                << "seed " << seed << ", grab " << i << ", packet " << needed;
        }
        // What is dropped is the rest of its group: nothing decoded comes before the next group.
        bool isDropping = false;
        for (std::size_t i = 0; i < uses.size(); ++i) {
            if (film.packets[i].startsGroup) isDropping = false;
            if (uses[i] == PacketUse::drop) isDropping = true;
            ASSERT_EQ(uses[i] == PacketUse::drop, isDropping) << "seed " << seed << ", packet " << i;
            dropped += uses[i] == PacketUse::drop;
            skippable += uses[i] == PacketUse::decodeIfReference;
        }
    }
    EXPECT_GT(dropped, 1000);
    EXPECT_GT(skippable, 1000);
}

TEST(GrabPlanner, SavesWhatCanBeSaved) {
    // 25 pictures a second, groups of 25, every second picture between two others; 5 grabs a second need
    // every fifth.
    GrabPlanner planner({20, 5, 3.99}, tolerance);
    int uses[3] = {};
    const auto takeAll = [&] {
        while (planner.isReady())
            ++uses[static_cast<int>(planner.take())];
    };
    for (int i = 0; i < 100; ++i) {
        const int inGroup = i % 25;
        const int shown = inGroup == 0 ? i : inGroup % 2 == 1 ? i + 1 : i - 1;
        planner.add({shown * 0.04, (i - 1) * 0.04, inGroup == 0, true, 100});
        takeAll();
    }
    planner.end();
    takeAll();
    EXPECT_EQ(uses[static_cast<int>(PacketUse::decode)], 20);
    // Picture 20 of each group is its 20th packet and the last one needed.
    EXPECT_EQ(uses[static_cast<int>(PacketUse::drop)], 4 * 5);
}

TEST(GrabPlanner, LooksAheadWithinBounds) {
    struct Case {
        const char* name;
        std::size_t size;
        std::size_t mostPending;
    };
    for (const Case& c : {Case{"many small packets", 10, 601}, {"large packets", 4 << 20, 7}}) {
        SCOPED_TRACE(c.name);
        GrabPlanner planner({10, 1, 9.9}, tolerance);
        std::size_t pending = 0, most = 0;
        for (int i = 0; i < 3000;
             ++i) {  // all displayed late and without decode times: nothing is ever certain
            planner.add({100.0 - i * 0.001, std::nullopt, false, true, c.size});
            most = std::max(most, ++pending);
            while (planner.isReady()) {
                planner.take();
                --pending;
            }
        }
        EXPECT_LE(most, c.mostPending);
    }
}

}  // namespace
}  // namespace zeb::ffmpeg
