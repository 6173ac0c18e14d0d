#include "media/reading/GrabPlanner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <random>
#include <vector>

namespace zeb::ffmpeg {
namespace {

constexpr double tolerance = 0.001;

/// A random video as packets in decoding order. Its groups have two or three levels of pictures between
/// anchors, its rate is constant or variable, and its decode times are present, late or missing.
struct Film {
    std::vector<PlannedPacket> packets;
    GrabSchedule schedule;
};

Film randomFilm(std::mt19937& random) {
    const auto below = [&random](int end) { return static_cast<int>(random() % static_cast<unsigned>(end)); };
    const auto oneOf = [&](const auto& values) { return values[static_cast<std::size_t>(below(5))]; };
    Film film;
    const int count = 1 + below(120);
    const bool isVariable = below(3) == 0;
    const double period = oneOf(std::array{0.02, 1 / 24.0, 0.04, 1001 / 30000.0, 0.5});
    std::vector<double> times;
    double time = oneOf(std::array{1.37, -0.31, 0.0, 0.0, 0.0});
    for (int i = 0; i < count; ++i) {
        times.push_back(time);
        time += isVariable ? 0.004 + 0.09 * below(100) / 50 : period;
    }
    // Converts display order to decoding order: after each anchor come the pictures before it, halved
    // recursively.
    const auto add = [&](int picture, bool startsGroup) {
        film.packets.push_back(
            {times[static_cast<std::size_t>(picture)], {}, startsGroup, below(25) != 0, 1000});
    };
    const std::function<void(int, int)> between = [&](int first, int end) {
        if (first >= end) return;
        const int middle = (first + end) / 2;
        add(middle, false);
        between(first, middle);
        between(middle + 1, end);
    };
    for (int next = 0; next < count;) {
        const bool startsGroup = next == 0 || below(4) == 0;
        // A closed group has no pictures displayed before its first.
        const int skipped = startsGroup ? 0 : std::min(below(8), count - 1 - next);
        add(next + skipped, startsGroup);
        between(next, next + skipped);
        next += skipped + 1;
    }
    const bool hasDecodeTimes = below(5) != 0;
    const double slack = below(3) * period;
    double earliest = 1e9;
    for (auto packet = film.packets.rbegin(); packet != film.packets.rend(); ++packet) {
        earliest = std::min(earliest, packet->displayTime);
        if (hasDecodeTimes && below(10) != 0) packet->decodeTime = earliest - slack;
    }
    film.schedule.perSecond = oneOf(std::array{1, 3, 10, 24, 60});
    const double length = std::max(times.back(), 0.0) + period * below(3);
    film.schedule.count =
        static_cast<std::int64_t>(std::ceil(std::max(length, 0.1))) * film.schedule.perSecond;
    film.schedule.last = std::max(length - 1 / 600.0, 0.0);
    return film;
}

/// The packet that a grab shows: the last displayed one whose time is not later, else the first one. Null if
/// there is none.
const PlannedPacket* selected(const std::vector<PlannedPacket>& packets, double time) {
    const PlannedPacket *best = nullptr, *first = nullptr;
    for (const PlannedPacket& packet : packets) {
        if (!packet.isShown) continue;
        if (first == nullptr || packet.displayTime < first->displayTime) first = &packet;
        const bool isAfter = packet.displayTime > time + tolerance;
        if (!isAfter && (best == nullptr || packet.displayTime >= best->displayTime)) best = &packet;
    }
    return best != nullptr ? best : first;
}

/// The planner's decision on each packet, and the largest number of packets it held back.
struct Plan {
    std::vector<PacketUse> uses;
    std::size_t mostPending = 0;

    Plan(const GrabSchedule& schedule, const std::vector<PlannedPacket>& packets) {
        GrabPlanner planner(schedule, tolerance);
        const auto takeAll = [&] {
            while (planner.isReady())
                uses.push_back(planner.take());
        };
        for (std::size_t i = 0; i < packets.size(); ++i) {
            planner.add(packets[i]);
            mostPending = std::max(mostPending, i + 1 - uses.size());
            takeAll();
        }
        planner.end();
        takeAll();
    }
    auto count(PacketUse use) const { return std::count(uses.begin(), uses.end(), use); }
};

TEST(GrabPlanner, KeepsEveryPictureThatGrabsShow) {
    std::ptrdiff_t dropped = 0, skippable = 0;
    for (unsigned seed = 0; seed < 3000; ++seed) {
        std::mt19937 random(seed);
        const Film film = randomFilm(random);
        const Plan plan(film.schedule, film.packets);
        ASSERT_EQ(plan.uses.size(), film.packets.size());
        for (std::int64_t i = 0; i < film.schedule.count; ++i) {
            const PlannedPacket* needed = selected(film.packets, film.schedule.at(i).seconds());
            if (needed == nullptr) continue;
            ASSERT_EQ(plan.uses[static_cast<std::size_t>(needed - film.packets.data())], PacketUse::decode)
                << "seed " << seed << ", grab " << i;
        }
        // Packets are dropped at the end of a group only: after a dropped one, none is decoded until the next
        // group.
        for (std::size_t i = 1; i < plan.uses.size(); ++i) {
            if (plan.uses[i - 1] != PacketUse::drop || film.packets[i].startsGroup) continue;
            ASSERT_EQ(plan.uses[i], PacketUse::drop) << "seed " << seed << ", packet " << i;
        }
        dropped += plan.count(PacketUse::drop);
        skippable += plan.count(PacketUse::decodeIfReference);
    }
    EXPECT_GT(dropped, 1000);
    EXPECT_GT(skippable, 1000);
}

TEST(GrabPlanner, DropsPicturesThatNoGrabNeeds) {
    // 25 pictures per second in groups of 25; every second one is a B picture. 5 grabs per second need every
    // fifth picture.
    std::vector<PlannedPacket> packets;
    for (int i = 0; i < 100; ++i) {
        const int inGroup = i % 25;
        const int shown = inGroup == 0 ? i : inGroup % 2 == 1 ? i + 1 : i - 1;
        packets.push_back({shown * 0.04, (i - 1) * 0.04, inGroup == 0, true, 100});
    }
    const Plan plan({20, 5, 3.99}, packets);
    EXPECT_EQ(plan.count(PacketUse::decode), 20);
    // Picture 20 of each group is the last one needed. It is in the 20th packet.
    EXPECT_EQ(plan.count(PacketUse::drop), 4 * 5);
}

TEST(GrabPlanner, LooksAheadWithinBounds) {
    for (const auto& [size, mostPending] : {std::pair{10U, 601U}, {4U << 20, 7U}}) {
        std::vector<PlannedPacket>
            packets;  // displayed late and without decode times: no decision is possible
        for (int i = 0; i < 3000; ++i)
            packets.push_back({100.0 - i * 0.001, std::nullopt, false, true, size});
        EXPECT_LE(Plan({10, 1, 9.9}, packets).mostPending, mostPending) << size;
    }
}

}  // namespace
}  // namespace zeb::ffmpeg
