#include "cli/InfoText.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

namespace zeb::cli {
namespace {

MovieFacts facts() {
    MovieFacts result;
    result.header.title = "QL \x1b[31mred";
    result.header.width = 448;
    result.header.height = 256;
    result.header.fps = 25;
    result.header.mode = 32;
    result.header.frameCount = 250;
    result.header.sampleRate = 20000;
    result.header.audioChannels = 2;
    result.header.options = 1;
    result.fileSize = 12'345'678;
    result.isFinished = true;
    result.wholeSeconds = 10;
    result.wholeFrames = 250;
    result.largestBlock = 1'300'000;
    result.bytesPerSecond = 1'234'560.4;
    return result;
}

TEST(InfoText, AlignsTheFacts) {
    EXPECT_EQ(infoText("a\n.zeb", facts()),
              "a\\x0a.zeb\n"
              "  Title          QL \\x1b[31mred\n"
              "  Size           448x256\n"
              "  Rate           25 frames per second\n"
              "  Mode           32 (16-bit high colour)\n"
              "  Frames         250\n"
              "  Duration       0:10\n"
              "  Sound          stereo, 20000 Hz, 8 bits\n"
              "  Loop           yes\n"
              "  File size      12.3 MB (12345678 bytes)\n"
              "  Data rate      1.2 MB per second\n"
              "  Largest block  1.3 MB (1300000 bytes)\n"
              "  Finished       yes\n");
}

TEST(InfoText, TellsWhatIsOdd) {
    MovieFacts odd = facts();
    odd.isFinished = false;
    odd.wholeFrames = 75;
    odd.header.mode = 7;
    odd.header.audioChannels = 65535;
    const std::string text = infoText("a", odd);
    EXPECT_THAT(text, ::testing::HasSubstr("Finished       no, 75 of 250 frames are there\n"));
    EXPECT_THAT(text, ::testing::HasSubstr("Mode           7 (unknown)\n"));
    EXPECT_THAT(text, ::testing::HasSubstr("Sound          65535 channels, 20000 Hz, 8 bits\n"));
}

TEST(InfoText, SpeaksJson) {
    const auto json = nlohmann::json::parse(infoJson("a.zeb", facts()));
    EXPECT_EQ(json, nlohmann::json({{"file", "a.zeb"},
                                    {"title", "QL \x1b[31mred"},
                                    {"width", 448},
                                    {"height", 256},
                                    {"framesPerSecond", 25},
                                    {"mode", 32},
                                    {"frames", 250},
                                    {"seconds", 10},
                                    {"soundChannels", 2},
                                    {"soundRate", 20000},
                                    {"loop", true},
                                    {"fileSize", 12'345'678},
                                    {"bytesPerSecond", 1'234'560.4},
                                    {"largestBlock", 1'300'000},
                                    {"finished", true}}));
}

}  // namespace
}  // namespace zeb::cli
