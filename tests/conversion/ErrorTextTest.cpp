#include "platform/text/ErrorText.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <filesystem>
#include <future>
#include <new>
#include <set>
#include <stdexcept>
#include <system_error>
#include <vector>

#include "conversion/export/ExportError.h"
#include "conversion/plan/AudioTrack.h"
#include "format/ZEBErrors.h"
#include "media/Media.h"
#include "platform/files/FileHandle.h"
#include "platform/text/LocalizedText.h"
#include "platform/text/SystemErrorText.h"

namespace zeb {
namespace {

class ErrorTextTest : public ::testing::Test {
protected:
    ~ErrorTextTest() override { setTextLocale({}); }

    static std::string in(const char* language, const std::exception& error) {
        setTextLocale({.language = language});
        return errorText(error);
    }
};

TEST_F(ErrorTextTest, FixedDescriptionsAreTheGermanTexts) {
    const std::pair<LocalizableError, const char*> cases[] = {
        {ZEBConverterError::cannotCreateOutput("/a.zeb"), "The output file cannot be created: /a.zeb"},
        {ZEBConverterError::noVideoTrack(), "There is no video track."},
        {ZEBConverterError::cancelled(), "Cancelled."},
        {ZEBFormatError::notAMovie(), "Not a ZEB1 file"},
        {ZEBFormatError::headerTooShort(), "The header is too short"},
        {ZEBFormatError::titleOutsideHeader(), "The title passes the end of the header"},
        {ZEBFormatError::unexpectedEnd(), "Unexpected end of the file"},
        {ZEBFormatError::endOfMovie(), "End of the movie"},
        {ZEBFormatError::noFileHandle(), "No file is open"},
    };
    for (const auto& [error, english] : cases) {
        EXPECT_EQ(in("de", error), error.what());
        EXPECT_EQ(in("en", error), english);
    }
    EXPECT_STREQ(ZEBConverterError::cannotCreateOutput("/a.zeb").what(),
                 "Kann Ausgabedatei nicht erstellen: /a.zeb");
}

TEST_F(ErrorTextTest, TextsFollowTheLanguage) {
    const FileError full("/a%@.zeb", ENOSPC);
    const MediaError damaged(MediaError::cannotDecode, {"error_media_damaged_picture"});
    const MediaError refused(MediaError::cannotOpen, full.reasonText());
    const std::filesystem::filesystem_error denied("stat", "/x",
                                                   std::error_code(EACCES, std::generic_category()));
    const struct {
        const std::exception& error;
        const char* english;
        const char* german;
    } cases[] = {
        {full, "/a%@.zeb: No space left on device", "/a%@.zeb: Auf dem Datenträger ist kein Platz mehr"},
        {refused, "No space left on device", "Auf dem Datenträger ist kein Platz mehr"},
        {damaged, "The picture is damaged", "Das Bild ist beschädigt"},
        {denied, "/x: Permission denied", "/x: Keine Berechtigung"},
        {std::system_error(EIO, std::system_category()), "Input/output error",
         "Fehler beim Lesen oder Schreiben des Datenträgers"},
        {std::bad_alloc(), "Not enough memory", "Der Arbeitsspeicher reicht nicht"},
        {ExportError::cannotRead(full), "/a%@.zeb: No space left on device",
         "/a%@.zeb: Auf dem Datenträger ist kein Platz mehr"},
        {ExportError::outside(KeyedText{"frame_format", {std::int64_t{9}}}, 1, "0:01"),
         "frame 9 is past the end: the movie has 1 frame (0:01)",
         "Bei Bild 9 ist nichts: Der Film hat 1 Bild (0:01)"},
        {ZEBWriterError::valueOutOfRange("width", 65536),
         "ZEBWriter: width is out of range for ZEB1 (32-bit limit). Value=65536. The resulting .zeb would "
         "exceed "
         "format limits (e.g., > 4 GB).",
         "ZEBWriter: Breite liegt außerhalb der Grenzen von ZEB1 (32 Bit). Wert=65536. Die .zeb-Datei würde "
         "die "
         "Grenzen des Formats sprengen (z. B. > 4 GB)."},
        // Texts of other exceptions are not translated.
        {std::runtime_error("odd"), "odd", "odd"},
        {std::system_error(std::make_error_code(std::future_errc::no_state)), "", ""},
    };
    for (const auto& each : cases) {
        const std::string plain = each.error.what();
        EXPECT_EQ(in("en", each.error), *each.english != '\0' ? each.english : plain);
        EXPECT_EQ(in("de", each.error), *each.german != '\0' ? each.german : plain);
    }
    try {
        throw 1;
    } catch (...) {
        EXPECT_EQ(currentErrorText(), "Unbekannter Fehler");
    }
}

TEST_F(ErrorTextTest, SystemErrorsHaveDistinctTexts) {
    std::set<std::string> systemTexts;
    for (const int number :
         {EPERM,        ENOENT,    EINTR,  EIO,     ENXIO,  EBADF,   EAGAIN,    ENOMEM,
          EACCES,       EBUSY,     EEXIST, EXDEV,   ENODEV, ENOTDIR, EISDIR,    EINVAL,
          ENFILE,       EMFILE,    EFBIG,  ENOSPC,  ESPIPE, EROFS,   EMLINK,    EPIPE,
          ENAMETOOLONG, ENOTEMPTY, ELOOP,  ENOTSUP, EDQUOT, ESTALE,  ETIMEDOUT, EOVERFLOW}) {
        const FileError error("/a.zeb", number);
        EXPECT_NE(systemErrorText(number).key, "error_system_other_format") << number;
        // Two cases share the text about devices, two the text about open files.
        const bool isNew = systemTexts.insert(in("en", error)).second;
        EXPECT_TRUE(isNew || number == ENODEV || number == EMFILE) << number;
        EXPECT_NE(in("en", error), in("de", error));
    }
    const FileError odd("/a.zeb", EILSEQ);
    EXPECT_EQ(in("de", odd), odd.what()) << "the system's own text";
}

TEST_F(ErrorTextTest, SoundTrackLabelsFollowTheLanguage) {
    const SoundTrack track{.sampleRate = 48000, .channelsPerFrame = 2, .formatCode = 0x61616320};
    setTextLocale({"de", ","});
    EXPECT_EQ(audioTrackLabel(track, 0), "Spur 1 · Stereo · 48.0 kHz · aac ");
    setTextLocale({});
    EXPECT_EQ(audioTrackLabel({}, 2), "Track 3");
}

}  // namespace
}  // namespace zeb
