#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "conversion/plan/ConversionPlan.h"
#include "conversion/plan/RequestedSettings.h"
#include "conversion/plan/SettingsError.h"
#include "conversion/plan/SettingsFile.h"
#include "platform/files/FileHandle.h"

namespace zeb {
namespace {

TEST(Time, ParsesUsualNotations) {
    EXPECT_EQ(parseTime("0"), 0);
    EXPECT_EQ(parseTime("2.5"), 2'500'000);
    EXPECT_EQ(parseTime("1:30"), 90'000'000);
    EXPECT_EQ(parseTime("1:02:03.000001"), 3'723'000'001);
    EXPECT_EQ(parseTime("360000000"), 360'000'000'000'000);
    EXPECT_EQ(parseTime("360000001"), std::nullopt);
    for (const char* text : {"", ".5", "1.", "1.0000001", "1:60", "1:2:3:4", "-1", "1.-5", "1.-0", "1:", ":1",
                             "1e3", "99999999999", "5%"})
        EXPECT_EQ(parseTime(text), std::nullopt) << text;
    EXPECT_EQ(parseTimePoint("12.5%")->seconds(80), 10);
    EXPECT_EQ(parseTimePoint("100%")->seconds(80), 80);
    EXPECT_EQ(parseTimePoint("1:30")->seconds(1), 90);
    for (const char* text : {"%", "-1%", "100.1%", "101%", "5.%", "1:00%"})
        EXPECT_FALSE(parseTimePoint(text)) << text;
    for (const char* text : {"0:05", "1:02:03.5", "0:00.000001", "33%", "0.25%"})
        EXPECT_EQ(timePointText(*parseTimePoint(text)), text);
}

TEST(SettingRows, KeepTextsOverTheRoundTrip) {
    const std::pair<const char*, std::vector<const char*>> accepted[] = {
        {"title", {"A \"title\""}},
        {"size", {"512x256", "65535x1"}},
        {"fps", {"1", "65535"}},
        {"mode", {"4", "32"}},
        {"loop", {"true", "false"}},
        {"sound.channels", {"off", "mono", "stereo"}},
        {"sound.track", {"1", "1000000"}},
        {"shape.crop", {"auto", "64x48+0+7", "none"}},
        {"shape.fit", {"stretch", "pad", "fill", "scale"}},
        {"shape.padColour", {"#00ff7f"}},
        {"shape.pixelShape", {"ql", "16:15", "square"}},
        {"shape.rotate", {"0", "90", "180", "270"}},
        {"shape.flip", {"true"}},
        {"look.brightness", {"-100", "100"}},
        {"look.contrast", {"-100", "100"}},
        {"look.saturation", {"0", "200"}},
        {"look.gamma", {"0.2", "5", "1.25"}},
        {"look.autoLevels", {"true"}},
        {"colours.kind", {"natural", "levels"}},
        {"colours.dithering", {"none", "diffusion", "ordered", "fine", "rows"}},
        {"colours.tone", {"1", "3"}},
        {"colours.toe", {"0", "0.25"}},
        {"colours.sharpen", {"0", "200"}},
        {"time.from", {"1:00", "5%"}},
        {"time.to", {"1:00:00.5", "95%"}},
    };
    EXPECT_EQ(std::size(accepted), settingRows().size());
    RequestedSettings requested;
    for (const auto& [path, texts] : accepted) {
        for (const char* text : texts) {
            EXPECT_TRUE(settingRow(path).take(requested, text)) << path << text;
            EXPECT_EQ(settingRow(path).text(requested), text) << path;
        }
    }
    RequestedSettings read;
    readSettings(settingsJson(requested), read);
    EXPECT_EQ(settingsJson(read), settingsJson(requested));
    EXPECT_EQ(read.others, requested.others);
    EXPECT_EQ(read.size, requested.size);

    const std::pair<const char*, std::vector<const char*>> refused[] = {
        {"size", {"512", "0x5", "5x65536", "5x5x5"}},
        {"fps", {"0", "65536", "2.5"}},
        {"sound.track", {"0"}},
        {"shape.crop", {"", "64x48", "64x48+1", "0x48+0+0", "64x48+-1+0"}},
        {"shape.padColour", {"00ff7f", "#00ff7", "#00fg7f", "#+1ff7f"}},
        {"shape.pixelShape", {"0:1", "1:101", "2"}},
        {"shape.rotate", {"45", "360"}},
        {"look.brightness", {"-101", "101"}},
        {"look.gamma", {"0.19", "5.01", "-1", "nan", "1e0"}},
        {"colours.kind", {"blue", ""}},
        {"colours.toe", {"0.26"}},
    };
    for (const auto& [path, texts] : refused)
        for (const char* text : texts)
            EXPECT_FALSE(settingRow(path).take(requested, text)) << path << text;
}

TEST(SettingsFile, KeepsUnknownKeys) {
    RequestedSettings requested;
    readSettings(R"({"zebSettings": 1, "later": [1, {"a": null}], "look": {"gamma": 2, "hue": 5}})",
                 requested);
    EXPECT_EQ(requested.others.look.gamma, 2);
    settingRow("mode").take(requested, "4");
    RequestedSettings again;
    readSettings(settingsJson(requested), again);
    EXPECT_EQ(again.foreign, R"({"look":{"hue":5},"later":[1,{"a":null}]})");
    EXPECT_EQ(again.others, requested.others);
}

TEST(SettingsFile, NamesTheWrongKey) {
    const std::pair<const char*, const char*> cases[] = {
        {R"({"colours": {"tone": "x"}})", "colours.tone: a number from 1 to 3 is expected instead of \"x\"."},
        {R"({"fps": 2.5})", "fps: a whole number from 1 to 65535 is expected instead of 2.5."},
        {R"({"loop": 1})", "loop: true or false is expected instead of 1."},
        {R"({"size": 5})", "size: WIDTHxHEIGHT with sides from 1 to 65535 is expected instead of 5."},
        {R"({"look": []})", "look: an object is expected instead of []."},
        {R"([])", "The settings are not a JSON object."},
        {R"({"fps": 5)", "The settings are not valid JSON at byte 10."},
        {R"({"zebSettings": 2})", "The settings were written by a later version of the program."},
        {R"({"zebSettings": "1"})", "zebSettings: a version from 1 on is expected."},
    };
    for (const auto& [json, text] : cases) {
        RequestedSettings requested;
        try {
            readSettings(json, requested);
            ADD_FAILURE() << json;
        } catch (const SettingsError& error) {
            EXPECT_STREQ(error.what(), text);
        }
    }
    RequestedSettings requested;
    EXPECT_THROW(readSettings(std::string(100'000, '['), requested), SettingsError);
    EXPECT_THROW(readSettingsFile("/nonexistent/settings", requested), FileError);
}

TEST(CheckSettings, RefusesCombinationsThatDoNotExist) {
    const struct {
        const char* mode;
        const char* kind;
        const char* dithering;
        bool exists;
    } cases[] = {
        {"32", "levels", "none", true},       {"32", "levels", "rows", true},
        {"32", "levels", "diffusion", false}, {"32", "levels", "ordered", false},
        {"32", "natural", "ordered", false},  {"32", "natural", "rows", false},
        {"4", "levels", "none", true},        {"4", "levels", "diffusion", true},
        {"4", "levels", "ordered", false},    {"4", "levels", "fine", false},
        {"4", "levels", "rows", false},       {"4", "natural", "ordered", true},
        {"4", "natural", "fine", true},       {"4", "natural", "none", false},
        {"4", "natural", "diffusion", false}, {"4", "natural", "rows", false},
    };
    for (const auto& c : cases) {
        RequestedSettings requested;
        settingRow("mode").take(requested, c.mode);
        settingRow("colours.kind").take(requested, c.kind);
        settingRow("colours.dithering").take(requested, c.dithering);
        const auto check = [&] { checkSettings(requested.others); };
        if (c.exists) {
            EXPECT_NO_THROW(check()) << c.mode << c.kind << c.dithering;
        } else {
            EXPECT_THROW(check(), SettingsError) << c.mode << c.kind << c.dithering;
        }
    }
    // The switch of older versions has no effect in Mode 32, but contradicts natural colours.
    Settings settings;
    settings.dither = true;
    EXPECT_NO_THROW(checkSettings(settings));
    settings.qlModeNumber = 4;
    settings.colours.kind = Colours::Kind::natural;
    EXPECT_THROW(checkSettings(settings), SettingsError);
}

}  // namespace
}  // namespace zeb
