// A reader over a file of any bytes, which may shrink, grow back or fail, driven by any sequence of calls.

#include <cerrno>
#include <cstring>

#include "format/ZEBReader.h"
#include "fuzz/FuzzInput.h"

using namespace zeb;

namespace {

// The reader reports pictures that it cannot decode on standard output.
[[maybe_unused]] const bool isQuiet = std::freopen("/dev/null", "w", stdout) != nullptr;

/// What all handles on the file see. After a number of calls, in the middle of whatever goes on then, the
/// file gets another size.
struct Disk {
    fuzz::Bytes bytes;
    std::size_t size = 0;
    std::size_t nextSize = 0;
    std::uint64_t callsLeft = 0;
    bool fails = false;

    void countCall() {
        if (callsLeft > 0 && --callsLeft == 0) size = nextSize;
        if (fails) throw FileError("movie", EIO);
    }
};

class UnsteadyFile : public ReadableFile {
public:
    explicit UnsteadyFile(Disk& disk) : m_disk(disk) {}
    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) override {
        m_disk.countCall();
        if (offset >= m_disk.size) return 0;
        const std::size_t count = std::min<std::size_t>(buffer.size(), m_disk.size - offset);
        if (count > 0) std::memcpy(buffer.data(), m_disk.bytes.data() + offset, count);
        return count;
    }
    std::uint64_t size() override {
        m_disk.countCall();
        return m_disk.size;
    }

private:
    Disk& m_disk;
};

void step(ZEBReader& reader, Disk& disk, fuzz::FuzzInput& script) {
    const std::uint64_t operation = script.number(1);
    switch (operation % 16) {
        case 0:
        case 1:
            return reader.seekToFrame(static_cast<std::int64_t>(script.number(1)));
        case 2:
            return reader.seekToFrame(static_cast<std::int64_t>(script.number(8)));
        case 3: {
            const Soundtrack sound = reader.readAllAudio();
            return fuzz::require(sound.bytes.size() <= disk.bytes.size(), "sound comes from the file");
        }
        case 4:
            disk.callsLeft = 1 + script.number(1) % 16;
            disk.nextSize = static_cast<std::size_t>(script.number(2) % (disk.bytes.size() + 1));
            return;
        case 5:
            disk.size = disk.nextSize = disk.bytes.size();
            disk.fails = false;
            return;
        case 6:
            disk.fails = true;
            return;
        case 7:
            return reader.close();
        case 8:
            return reader.setMode32Interpretation(allMode32Interpretations[script.number(1) % 4]);
        case 9: {
            const ZEBHeader& header = reader.readHeader();
            return fuzz::require(header.width >= 1 && header.height >= 1 && header.fps >= 1, "at least 1");
        }
        default: {
            const auto image = reader.nextFrame(operation / 16 % 2 != 0);
            if (!image) return;
            const auto pixels =
                static_cast<std::uint64_t>(image->width) * static_cast<std::uint64_t>(image->height);
            return fuzz::require(image->pixels.size() == 4 * pixels, "a picture has its pixels");
        }
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzInput input(data, size);
    const fuzz::Bytes instructions = input.bytes(input.number(1));
    fuzz::FuzzInput script(instructions.data(), instructions.size());
    Disk disk{.bytes = input.rest()};
    disk.size = disk.nextSize = disk.bytes.size();

    ZEBReader reader([&disk] { return std::make_unique<UnsteadyFile>(disk); });
    try {
        reader.readHeader();
    } catch (const PlatformError&) {
        // The calls that follow must cope.
    }
    while (!script.isEmpty()) {
        try {
            step(reader, disk, script);
        } catch (const PlatformError& error) {
            fuzz::require(*error.what() != '\0', "an error says something");
        }
    }
    return 0;
}
