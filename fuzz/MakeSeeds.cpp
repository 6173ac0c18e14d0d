// fuzz_seeds FOLDER
//
// Writes the first inputs of every target below FOLDER (the committed corpus holds what they grew into):
// records of our own encoder, movies of our own writer, and bytes chosen for the edges of the formats.

#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <string>

#include "codec/RLE2.h"
#include "codec/SpriteEncoder.h"
#include "format/BigEndian.h"
#include "format/ZEBWriter.h"
#include "fuzz/FuzzInput.h"
#include "platform/PropertyList.h"
#include "tests/codec/SyntheticPictures.h"
#include "tests/format/GoldenMovie.h"
#include "tests/format/MemoryFile.h"

using namespace zeb;
using fuzz::Bytes;

namespace {

/// A shaded picture with an even bar, drawn at any size.
class Scene : public Picture {
public:
    int width() const override { return 512; }
    int height() const override { return 288; }
    void draw(const BitmapContext& bitmap) const override {
        std::ranges::copy(synthetic::natural(bitmap.width, bitmap.height, 1), bitmap.pixels.begin());
    }
};

Bytes joined(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

Bytes word(std::uint32_t value) {
    Bytes bytes;
    bigEndian::append32(bytes, value);
    return bytes;
}

Bytes text(const std::string& characters) {
    return {characters.begin(), characters.end()};
}

/// A sprite record: header, pattern, and a mask behind it.
Bytes sprite(std::uint8_t form, std::uint8_t colourMode, std::uint8_t control, std::uint16_t width,
             std::uint16_t height, const Bytes& pattern, const Bytes& mask = {}) {
    Bytes record = {form, colourMode, 0, control};
    bigEndian::append16(record, width);
    bigEndian::append16(record, height);
    const auto maskStart = static_cast<std::uint32_t>(mask.empty() ? 0 : 24 + pattern.size() - 16);
    return joined({record, word(0), word(12), word(maskStart), word(0), pattern, mask});
}

Bytes packed(const Bytes& raw) {
    Bytes block = joined({text("RLE2"), word(static_cast<std::uint32_t>(raw.size()))});
    compressRLE2(raw, block);
    return block;
}

Bytes encodedMovie(int mode, bool isFinished) {
    MovieParameters movie = test::golden::parameters();
    movie.qlMode = mode;
    movie.width = 16;
    movie.height = 8;
    test::MemoryDisk disk;
    ZEBWriter writer(std::make_unique<test::MemoryWritableFile>(disk), movie);
    SpriteEncoder encoder;
    const Bytes frame = mode == 4 ? encoder.encodeMode4Sprite(Scene(), 16, 8, true)
                                  : encoder.encodeMode32Sprite(Scene(), 16, 8);
    const std::span<const std::uint8_t> frames[] = {frame, frame};
    for (int second = 0; second < 2; ++second)
        writer.writeSecond(Bytes(40, 0x80), frames);
    if (isFinished) writer.finish();
    return disk.bytes;
}

class Corpus {
public:
    explicit Corpus(std::filesystem::path folder) : m_folder(std::move(folder)) {}

    void add(const std::string& target, const std::string& name, const Bytes& bytes) const {
        std::filesystem::create_directories(m_folder / target);
        std::ofstream file(m_folder / target / name, std::ios::binary);
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        if (!file.flush()) throw std::runtime_error("cannot write " + name);
    }

private:
    std::filesystem::path m_folder;
};

void addRunLengths(const Corpus& corpus) {
    const auto add = [&](const char* name, std::uint32_t expected, const Bytes& block) {
        corpus.add("ExpandRLE2", name, joined({word(expected), block}));
    };
    add("items-of-1", 8, joined({text("RLE1"), word(8), {2, 1, 2, 3, 0xFC, 9}}));
    add("items-of-2", 14, joined({text("RLE2"), word(14), {0xFE, 1, 2, 1, 3, 4, 5, 6, 0xFF, 7, 8}}));
    add("items-of-4", 16, joined({text("RLE4"), word(16), {0xFF, 1, 2, 3, 4, 1, 1, 2, 3, 4, 5, 6, 7, 8}}));
    add("items-of-3", 4, joined({text("RLE3"), word(4), {0xFF, 1, 2, 3}}));
    add("repeat-of-129", 258, joined({text("RLE2"), word(258), {0x80, 1, 2}}));
    add("repeat-cut-within-an-item", 5, joined({text("RLE4"), word(6), {0xFE, 1, 2, 3, 4}}));
    add("length-of-4-GiB", 4, joined({text("RLE2"), word(0xFFFFFFFF), {0x81, 1, 2}}));
    add("length-too-small", 4, joined({text("RLE2"), word(2), {0, 1, 2}}));
    add("literal-beyond-the-block", 4, joined({text("RLE2"), word(4), {5, 1, 2, 3, 4}}));
    add("literal-beyond-the-length", 4, joined({text("RLE2"), word(4), {2, 1, 2, 3, 4, 5, 6}}));
    add("expected-4-GiB", 0xFFFFFFFF, joined({text("RLE1"), word(4), {0x80, 1}}));
    add("expected-nothing", 0, joined({text("RLE1"), word(0)}));
    add("seven-bytes", 0, text("RLE2\1\1\1"));

    SpriteEncoder encoder;
    const std::span<const std::uint8_t> pixels =
        encoder.packRGB565(encoder.renderRGBA(Scene(), 24, 16), 24, 16);
    const Bytes natural(pixels.begin(), pixels.end());
    add("natural-picture", static_cast<std::uint32_t>(natural.size()), packed(natural));

    const auto addRaw = [&](const char* name, std::uint8_t repetitions, const Bytes& raw) {
        corpus.add("RoundTripRLE2", name, joined({{static_cast<std::uint8_t>(repetitions - 1)}, raw}));
    };
    addRaw("natural-picture", 1, natural);
    addRaw("run-of-129", 1, Bytes(258, 7));
    addRaw("run-of-4800", 16, Bytes(600, 7));
    Bytes distinct;
    for (std::uint16_t value = 0; value < 130; ++value)
        bigEndian::append16(distinct, value);
    addRaw("130-distinct-words", 1, distinct);
    addRaw("distinct-words-beyond-a-stretch", 16, joined({distinct, distinct, distinct}));
    addRaw("pairs", 3, {1, 2, 1, 2, 3, 4, 5, 6, 5, 6});
    addRaw("one-word", 1, {1, 2});
}

void addFrames(const Corpus& corpus) {
    const auto add = [&](const char* name, std::uint32_t width, std::uint32_t height, const Bytes& record) {
        static std::uint8_t interpretation = 0;
        corpus.add("DecodeFrame", name, joined({{interpretation++}, word(width), word(height), record}));
    };
    SpriteEncoder encoder;
    const Bytes mode4Record = encoder.encodeMode4Sprite(Scene(), 16, 8, true);
    const Bytes mode32Record = encoder.encodeMode32Sprite(Scene(), 16, 8);
    add("mode-4", 16, 8, mode4Record);
    add("mode-32", 16, 8, mode32Record);
    add("mode-4-masked", 8, 1, sprite(1, 0, 0, 8, 1, {0xFF, 0, 0, 0}, {0xF0, 0, 0, 0}));
    add("mode-4-packed", 8, 2, sprite(1, 0, 0x40, 8, 2, packed(Bytes(8, 0xAA))));
    add("mode-32-odd-width", 3, 1, sprite(2, 32, 0, 3, 1, {1, 2, 3, 4, 5, 6, 0, 0}));
    add("mode-32-alpha", 2, 2, sprite(2, 32, 0x20, 2, 2, {1, 2, 3, 4, 5, 6, 7, 8}, {0, 85, 170, 255}));
    add("mode-32-masked-and-packed", 4, 2,
        sprite(2, 32, 0x40, 4, 2, packed(Bytes(16, 0x5A)), joined({Bytes(8, 0), Bytes(8, 1)})));
    add("mode-33", 2, 1, sprite(2, 33, 0, 2, 1, {0xF8, 0x3E, 0x07, 0xC1}));
    add("mode-64-packed-mask", 2, 1,
        sprite(2, 64, 0x80, 2, 1, {1, 2, 3, 4, 5, 6, 7, 8}, packed({0, 0, 0, 0, 9, 9, 9, 9})));
    add("mode-64-packed-alpha", 4, 1,
        sprite(2, 64, 0xE0, 4, 1, joined({text("RLE4"), word(16), {0xFD, 1, 2, 3, 4}}),
               joined({text("RLE1"), word(4), {0xFD, 128}})));
    add("claims-8192-x-8192", 8, 8, sprite(2, 64, 0x40, 8192, 8192, packed(Bytes(16, 0))));
    add("claims-4-GiB", 8, 8, sprite(2, 32, 0x40, 8192, 8192, joined({text("RLE2"), word(0xFFFFFFFF)})));
    add("side-of-8193", 8, 8, sprite(2, 32, 0, 8193, 1, Bytes(16, 0)));
    add("system-sprite", 1, 1, sprite(0, 32, 0, 1, 1, Bytes(4, 0)));
    Bytes farAway = sprite(2, 32, 0, 1, 1, Bytes(4, 0), Bytes(4, 0));
    std::ranges::copy(word(0x7FFFFFFF), farAway.begin() + 12);
    add("pattern-near-2-GiB", 1, 1, farAway);
    std::ranges::copy(word(0xFFFFFFF4), farAway.begin() + 12);  // -12: the header as pattern
    std::ranges::copy(word(0xFFFFFFF0), farAway.begin() + 16);  // -16: and as mask
    add("header-as-pattern-and-mask", 1, 1, farAway);
    add("raw-32-bit", 2, 2, Bytes(16, 0x33));
    add("raw-16-bit", 2, 2, Bytes(8, 0x33));
    add("raw-with-header", 1, 1, joined({{0, 2, 0, 1, 0, 0, 0, 0}, Bytes(4, 0x33)}));
    add("raw-for-a-header-of-4-billion-pixels", 65535, 65535, Bytes(16, 0x33));
    add("raw-for-negative-sides", 0xFFFFFFFF, 0xFFFFFFFF, Bytes(4, 0x33));
}

void addHeaders(const Corpus& corpus) {
    const auto add = [&](const char* name, const Bytes& bytes) { corpus.add("ParseHeader", name, bytes); };
    const Bytes golden = test::golden::movie();
    add("golden", Bytes(golden.begin(), golden.begin() + test::golden::firstBlock));
    const auto titled = [&](const std::string& title) {
        MovieParameters movie = test::golden::parameters();
        movie.title = title;
        test::MemoryDisk disk;
        ZEBWriter(std::make_unique<test::MemoryWritableFile>(disk), movie);
        return disk.bytes;
    };
    add("title-empty", titled(""));
    add("title-latin-1", titled("M\u00E4rchen"));
    add("title-utf-8", titled("10 \u20AC \U0001F39E"));
    add("title-is-markup", titled("<b>\n\x01\x7F"));
    add("size-3", joined({text("ZEB1"), word(3), {0, 0, 0}}));
    add("size-of-4-GiB", joined({text("ZEB1"), word(0xFFFFFFFF), {0, 0}, Bytes(24, 0)}));
    add("title-outside", joined({text("ZEB1"), word(26), {0xFF, 0xFF}, Bytes(24, 0)}));
    add("no-pad-byte", joined({text("ZEB1"), word(3), {0, 1, 'A'}}));
    add("all-zero-fields", joined({text("ZEB1"), word(26), {0, 0}, Bytes(24, 0)}));
    add("half-an-index-entry", joined({text("ZEB1"), word(28), {0, 0}, Bytes(26, 1)}));
}

void addMovies(const Corpus& corpus) {
    const Bytes golden = test::golden::movie();
    const Bytes mode4 = encodedMovie(4, true), mode32 = encodedMovie(32, true);
    const Bytes unfinished = encodedMovie(32, false);
    const auto add = [&](const char* name, const Bytes& script, const Bytes& movie) {
        corpus.add("ReadMovie", name, joined({{static_cast<std::uint8_t>(script.size())}, script, movie}));
    };
    add("through-to-the-end", {15, 15, 15, 15, 15, 15, 31}, mode32);
    add("seek-back-and-listen", {15, 0, 3, 15, 3, 0, 0, 15}, mode4);
    add("seek-anywhere", {2, 0x80, 0, 0, 0, 0, 0, 0, 0, 15, 2, 0x7F, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0, 15},
        mode32);
    add("walk-without-index", {0, 3, 15, 0, 1, 15}, unfinished);
    add("every-order-of-bytes", {8, 0, 15, 8, 1, 15, 8, 2, 15, 8, 3, 15}, mode32);
    add("shrinks-and-grows", {15, 4, 0, 0, 60, 15, 3, 15, 5, 0, 0, 4, 2, 0, 70, 3, 15}, mode32);
    add("fails-and-recovers", {15, 6, 15, 3, 5, 0, 1, 15}, mode32);
    add("closed-and-opened", {15, 7, 15, 9, 15}, mode32);
    add("frames-that-are-no-pictures", {15, 15, 15, 15, 15}, golden);
    Bytes hostile = golden;
    hostile[test::golden::index] = 0xFF;      // beyond the file
    hostile[test::golden::index + 7] = 0x00;  // no entry
    hostile[test::golden::totalFrames] = 0xFF;
    add("index-beyond-the-file", {0, 0, 15, 0, 2, 15, 2, 0, 0, 0, 0, 0xFF, 0, 0, 0, 15}, hostile);
    Bytes countless = joined({text("ZEB1"),
                              word(26),
                              {0, 0, 0, 1, 0, 1, 0xFF, 0xFF, 0, 32},
                              word(0xFFFFFFFF),
                              word(0),
                              {0x4E, 0x20, 0xFF, 0xFF, 0, 1, 0, 0},
                              Bytes(64, 0)});
    add("4-billion-frames", {2, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 15, 3, 31}, countless);

    const auto addPartial = [&](const char* name, std::uint8_t interruption, const Bytes& movie) {
        corpus.add("FinishPartialFile", name, joined({{interruption}, movie}));
    };
    addPartial("finished", 0, golden);
    addPartial("unfinished", 3, test::golden::unfinishedMovie());
    addPartial("unfinished-mode-32", 5, unfinished);
    addPartial("torn-block", 1, Bytes(unfinished.begin(), unfinished.end() - 5));
    addPartial("no-whole-block", 0, Bytes(unfinished.begin(), unfinished.begin() + 60));
    addPartial("bytes-behind-the-last", 2, joined({mode4, {1, 2, 3}}));
    addPartial("index-beyond-the-file", 4, hostile);
    Bytes slack = joined({test::golden::unfinishedMovie(), {1, 2, 3}});
    slack[test::golden::secondBlock + 3] += 3;
    addPartial("block-longer-than-its-parts", 1, slack);
    const Bytes tiny = {0, 0, 0, 8, 0, 0, 0, 0, 0, 0, 0, 0};  // a second without sound and one empty frame
    const auto tinyMovie = [&](std::uint8_t fps, const Bytes& index) {
        return joined({text("ZEB1"),
                       word(static_cast<std::uint32_t>(26 + index.size())),
                       {0, 0, 0, 1, 0, 1, 0, fps, 0, 32},
                       word(7),
                       word(0),
                       {0x4E, 0x20, 0, 1, 0, 0, 0, 0},
                       index,
                       tiny,
                       tiny,
                       tiny});
    };
    addPartial("without-an-index", 1, tinyMovie(1, {}));
    addPartial("index-too-short", 3, tinyMovie(1, word(1)));
    addPartial("index-too-long", 3, tinyMovie(1, Bytes(22, 9)));
    addPartial("0-frames-per-second", 2, tinyMovie(0, word(0)));
    addPartial("4-billion-frames", 0, countless);

    const auto addWritten = [&](const char* name, const Bytes& script) {
        corpus.add("WriteAndRead", name, script);
    };
    // finished, torn bytes, title, width, height, fps, mode, channels, loop, index entries; then the seconds
    const Bytes seconds = joined({{3, 1, 2, 3}, {4, 0, 0, 9, 255}, {0}, {1, 7}, {2, 1, 2}, {4, 1, 2, 3, 4}});
    addWritten("two-seconds", joined({{1, 0, 2, 'Q', 'L', 0, 1, 0, 1, 0, 2, 1, 1, 1, 2}, seconds}));
    addWritten("index-too-short", joined({{1, 0, 0, 0, 1, 0, 1, 0, 2, 0, 2, 0, 1}, seconds}));
    addWritten("left-early", joined({{0, 0, 3, 0xC3, 0xA4, '!', 0, 2, 0, 1, 0, 2, 0, 2, 1, 9}, seconds}));
    addWritten("left-torn", joined({{0, 3, 3, 0xE2, 0x82, 0xAC, 0, 2, 0, 1, 0, 2, 0, 2, 1, 9}, seconds}));
    addWritten("without-a-second", {1, 0, 1, 0xFF, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0});
    addWritten("fps-65536", {1, 0, 0, 0, 1, 0, 1, 255, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0});
    addWritten("negative-width", {1, 0, 0, 255, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0, 1, 0, 1});
}

void addRequests(const Corpus& corpus) {
    const auto add = [&](const char* name, const std::string& request) {
        corpus.add("ParseAppAction", name, text(request));
    };
    add("play", "zebmaker://play?url=file%3A%2F%2F%2FUsers%2Fa%2Fclip.zeb");
    add("encode-without-a-host", "zebmaker:encode?url=file:///Users/a/holiday.mov");
    add("unknown-verb", "zebmaker:///x?a&url=file:///x/y.ZEB&url=B#end");
    add("escaped-verb", "zebmaker://pl%61y?ur%6C=A+B");
    add("escaped-twice", "zebmaker://encode?url=file:///50%2525%2520off.mov");
    add("file-with-detours", "FILE://localhost/a/./b//../%63/.d.e/");
    add("file-relative", "file:../a/..//../b.zeb");
    add("file-elsewhere", "file://u:p@server:80/share/../x.zeb");
    add("escaped-nul", "file:///a%00/b.zeb");
    add("stray-percent-signs", "file:///100%/%zz%4/x.mov%");
    add("characters-to-escape", "http://\xC3\xA4 b@c@d/[1]\xFF<x>?{y}|^`\"\\#z#[");
    add("ipv6", "http://[1:2::3:255.0.10.9%25eth%30]:8080/");
    add("ipv6-whole", "//[1:2:3:4:5:6:7:8]?");
    add("ip-future", "s+1.-:[v1.a:b]//[v1F.a:b]:");
    add("bad-port", "http://host:80a/");
    add("no-scheme", "1a:b");
}

/// A binary property list of these objects, the first at the top; offsets and references have one byte.
Bytes binaryList(std::initializer_list<Bytes> objects) {
    Bytes list = text("bplist00");
    Bytes offsets;
    for (const Bytes& object : objects) {
        offsets.push_back(static_cast<std::uint8_t>(list.size()));
        list = joined({list, object});
    }
    const Bytes table = {static_cast<std::uint8_t>(list.size())};
    const Bytes count = {static_cast<std::uint8_t>(objects.size())};
    return joined({list, offsets, Bytes(6, 0), {1, 1}, Bytes(7, 0), count, Bytes(15, 0), table});
}

const PropertyDictionary settings = {
    {"presetDVDW", 768},
    {"soundEffectsEnabled", false},
    {"userPresetsJSON", text("[{\"id\":1}]")},
    {"list", PropertyArray{1, 2.5, "\u00e4", PropertyDictionary{{"w", "640 px"}}}},
    {"less", -5},
    {"", ""}};

void addPropertyLists(const Corpus& corpus) {
    const auto add = [&](const char* name, const Bytes& list) {
        corpus.add("ParsePropertyList", name, list);
    };
    add("xml", propertyList::writeXML(settings));
    add("xml-rare-kinds",
        text("<plist version=\"1.0\"><array><date>2001-02-03T04:05:06Z</date><real>nan</real>"
             "<integer>18446744073709551615</integer><integer>0xff</integer><string/>"
             "<dict><key>CF$UID</key><integer>5</integer></dict></array></plist>"));
    add("xml-comments",
        text("<plist><array><string>a<!-- </array> -->b<![CDATA[<c>]]>&#xE4;&lt;</string></array>"
             "</plist>"));
    add("xml-entities", text("<?xml version=\"1.0\"?><!DOCTYPE plist [<!ENTITY a \"aa\">]><plist><string>&a;"
                             "</string></plist>"));
    add("xml-quotes", text("<plist a='\"'><array><plist b=\"'\"></plist></array></plist>"));
    add("old", text("/* a */ { name = \"QL \\\"Demo\\\" \\U00e4\\344\"; size = (640, 480,); b = <0fbd77 "
                    "1c>; c; } "
                    "// end"));
    add("old-utf-16", {0xFF, 0xFE, '(', 0,    '"',  0,    0xE4, 0,    '"', 0,   ',',
                       0,    '\'', 0,   0x3C, 0xD8, 0x4E, 0xDF, '\'', 0,   ')', 0});
    add("old-nextstep", text("(\"\xD9\", a.b/c)"));
    add("old-nested", text("({a={b=((((<>))))}})"));
    add("binary", binaryList({{0xD2, 1, 2, 3, 4},
                              {0x51, 'a'},
                              {0x61, 0x00, 0xE4},
                              {0xA2, 5, 6},
                              {0x42, 1, 2},
                              {0x11, 3, 0},
                              {0x56, '6', '4', '0', ' ', 'p', 'x'}}));
    add("binary-cycle", binaryList({{0xA1, 1}, {0xA1, 0}}));
    add("binary-shared", binaryList({{0xA2, 1, 1}, {0xA2, 2, 2}, {0xA2, 3, 3}, {0xD1, 4, 3}, {0x51, 'a'}}));
    add("binary-rare-kinds", binaryList({{0xA9, 1, 2, 3, 4, 5, 6, 7, 8, 9},
                                         {0},
                                         {9},
                                         joined({{0x13}, Bytes(8, 0xFF)}),
                                         joined({{0x14}, Bytes(8, 0), Bytes(8, 0xFF)}),
                                         {0x22, 0x40, 0, 0, 0},
                                         {0x23, 0x7F, 0xF8, 0, 0, 0, 0, 0, 0},
                                         {0x33, 0x3F, 0xE0, 0, 0, 0, 0, 0, 0},
                                         {0x62, 0xD8, 0x3C, 0xDF, 0x4E},
                                         {0x80, 5}}));
    add("binary-promise", binaryList({{0x4F, 0x13, 0x10, 0, 0, 0, 0, 0, 0, 0}}));
    add("binary-set", binaryList({{0xC1, 1}, {0x0F}}));
}

void addPresets(const Corpus& corpus) {
    const auto add = [&](const char* name, const Bytes& stored) { corpus.add("LoadPresets", name, stored); };
    add("editor",
        text("[{\"id\":\"E621E1F8-C36C-495A-93FC-0C247A3E6E5F\",\"name\":\"\u00c4 4K\",\"width\":3840,"
             "\"height\":2160},{\"id\":\"e621e1f8-c36c-495a-93fc-0c247a3e6e5f\",\"name\":\"\",\"width\":"
             "64,"
             "\"height\":64.0}]"));
    add("main-window", text("[{\"id\":\"a\",\"name\":\"B\",\"width\":0,\"height\":-9223372036854775808}]"));
    add("records", text("[{\"title\":\"Clip\",\"w\":\"640 px\",\"presetH\":480.7,\"uuid\":\"u\",\"x\":[{}]},"
                        "{\"label\":\"L\",\"width\":true,\"w\":1e3,\"h\":\"\u0661\",\"height\":null},"
                        "{\"name\":\"My Clip\",\"width\":18446744073709551615,\"presetW\":7,\"height\":1}]"));
    add("edge-numbers", text("[{\"id\":\"\",\"name\":\"\",\"width\":9223372036854775808,\"height\":1e999}]"));
    add("escapes",
        text("[{\"id\":\"\\ud83c\\udf4e\\u0000\",\"name\":\"\\u00df \\t\",\"width\":1,\"height\":1}]"));
    add("other-shapes", text("[{\"presets\":[[[{\"a\":[]}]]]},{\"name\":\"a\",\"w\":1,\"h\":1},2]"));
    const PropertyArray records = {
        PropertyDictionary{{"title", "Clip"}, {"w", "1,280 px"}, {"h", 720}},
        PropertyDictionary{{"name", "  "}, {"id", "x"}, {"width", 1.5}, {"height", 2}},
        PropertyDictionary{{"name", "N"}, {"id", "x"}, {"width", 3}, {"height", 4}}};
    add("plist-xml", propertyList::writeXML(records));
    add("plist-binary", binaryList({{0xA2, 1, 2},
                                    {0xD3, 3, 4, 5, 6, 2, 2},
                                    {0x10, 9},
                                    {0x54, 'n', 'a', 'm', 'e'},
                                    {0x51, 'w'},
                                    {0x51, 'h'},
                                    {0x51, 'N'}}));
    add("plist-old", text("({ title = \"My \\U00c4\"; w = 640; h = \"480 px\"; }, x, "
                          "{ name = \"\"; width = 1; height = 2; identifier = i; })"));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: fuzz_seeds FOLDER\n");
        return 2;
    }
    const Corpus corpus(argv[1]);
    addRunLengths(corpus);
    addFrames(corpus);
    addHeaders(corpus);
    addMovies(corpus);
    addRequests(corpus);
    addPropertyLists(corpus);
    addPresets(corpus);
    return 0;
}
