#include "platform/text/SystemErrorText.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

namespace zeb {
namespace {

/// The system has one of two functions with the same name: one returns the text, the other returns an error
/// number and fills the buffer. Overloads handle both results. Both functions are thread-safe.
[[maybe_unused]] std::string textOf(const char* text, const char*) {
    return text;
}
[[maybe_unused]] std::string textOf(int failure, const char* buffer) {
    return failure == 0 ? buffer : "Unknown error";
}

struct NumberAndKey {
    int number;
    const char* key;
};

constexpr std::array knownErrors = {
    NumberAndKey{EPERM, "error_system_not_permitted"}, NumberAndKey{ENOENT, "error_system_no_file"},
    NumberAndKey{EINTR, "error_system_interrupted"},   NumberAndKey{EIO, "error_system_input_output"},
    NumberAndKey{ENXIO, "error_system_no_device"},     NumberAndKey{EBADF, "error_system_not_open"},
    NumberAndKey{EAGAIN, "error_system_unavailable"},  NumberAndKey{ENOMEM, "error_system_no_memory"},
    NumberAndKey{EACCES, "error_system_denied"},       NumberAndKey{EBUSY, "error_system_busy"},
    NumberAndKey{EEXIST, "error_system_exists"},       NumberAndKey{EXDEV, "error_system_other_disk"},
    NumberAndKey{ENODEV, "error_system_no_device"},    NumberAndKey{ENOTDIR, "error_system_no_folder"},
    NumberAndKey{EISDIR, "error_system_folder"},       NumberAndKey{EINVAL, "error_system_invalid"},
    NumberAndKey{ENFILE, "error_system_many_files"},   NumberAndKey{EMFILE, "error_system_many_files"},
    NumberAndKey{ETXTBSY, "error_system_busy"},        NumberAndKey{EFBIG, "error_system_large"},
    NumberAndKey{ENOSPC, "error_system_no_space"},     NumberAndKey{ESPIPE, "error_system_no_seek"},
    NumberAndKey{EROFS, "error_system_read_only"},     NumberAndKey{EMLINK, "error_system_many_links"},
    NumberAndKey{EPIPE, "error_system_pipe"},          NumberAndKey{ENAMETOOLONG, "error_system_long_name"},
    NumberAndKey{ENOTEMPTY, "error_system_not_empty"}, NumberAndKey{ELOOP, "error_system_link_loop"},
    NumberAndKey{EOVERFLOW, "error_system_overflow"},  NumberAndKey{ENOTSUP, "error_system_unsupported"},
    NumberAndKey{ETIMEDOUT, "error_system_timeout"},   NumberAndKey{EDQUOT, "error_system_quota"},
    NumberAndKey{ESTALE, "error_system_stale"},
};

}  // namespace

std::string systemErrorDescription(int errorNumber) {
    std::array<char, 256> buffer{};
    return textOf(strerror_r(errorNumber, buffer.data(), buffer.size()), buffer.data());
}

KeyedText systemErrorText(int errorNumber) {
    const auto* known =
        std::ranges::find_if(knownErrors, [&](const auto& each) { return each.number == errorNumber; });
    if (known != knownErrors.end()) return {known->key};
    return {"error_system_other_format", {systemErrorDescription(errorNumber)}};
}

}  // namespace zeb
