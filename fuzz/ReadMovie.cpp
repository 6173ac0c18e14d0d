// Reads a file of any bytes, which may shrink, grow back or fail, with any sequence of calls.

#include "format/ZEBReader.h"
#include "fuzz/FuzzInput.h"
#include "tests/format/MemoryFile.h"

using namespace zeb;

namespace {

// The reader reports pictures that it cannot decode on standard output.
[[maybe_unused]] const bool isQuiet = std::freopen("/dev/null", "w", stdout) != nullptr;

/// A file that changes its size after a number of calls.
struct Disk {
    fuzz::Bytes whole, bytes = whole;
    std::size_t nextSize = whole.size();
    std::uint64_t callsLeft = 0;
    bool fails = false;

    void countCall() {
        if (callsLeft > 0 && --callsLeft == 0) {
            bytes = whole;
            bytes.resize(nextSize);
        }
        if (fails) throw FileError("movie", EIO);
    }
};

void step(ZEBReader& reader, Disk& disk, fuzz::FuzzInput& script) {
    const std::uint64_t operation = script.number(1);
    switch (operation % 16) {
        case 0:
        case 1:
        case 2:
            return reader.seekToFrame(static_cast<std::int64_t>(script.number(operation % 16 < 2 ? 1 : 8)));
        case 3:
            return fuzz::require(reader.readAllAudio().bytes.size() <= disk.whole.size(),
                                 "sound comes from the file");
        case 4:
            disk.callsLeft = 1 + script.number(1) % 16;
            disk.nextSize = static_cast<std::size_t>(script.number(2) % (disk.whole.size() + 1));
            return;
        case 5:
            disk = {.whole = disk.whole, .callsLeft = disk.callsLeft};
            return;
        case 6:
            disk.fails = true;
            return;
        case 7:
            return reader.close();
        default:
            if (const auto image = reader.nextFrame(operation / 16 % 2 != 0)) {
                const auto columns = static_cast<std::size_t>(image->width);
                fuzz::require(image->pixels.size() == 4 * columns * static_cast<std::size_t>(image->height),
                              "a picture has its pixels");
            }
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzInput input(data, size);
    const fuzz::Bytes instructions = input.bytes(input.number(1));
    fuzz::FuzzInput script(instructions.data(), instructions.size());
    Disk disk{.whole = input.rest()};
    ZEBReader reader([&disk] {
        return std::make_unique<test::MemoryReadableFile>(disk.bytes, [&disk] { disk.countCall(); });
    });
    const auto attempt = [](const auto& action) {
        try {
            action();
        } catch (const PlatformError&) {
            // Later calls must still work.
        }
    };
    attempt([&] { reader.readHeader(); });
    while (!script.isEmpty())
        attempt([&] { step(reader, disk, script); });
    return 0;
}
