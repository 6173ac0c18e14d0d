#pragma once

#include <exception>
#include <new>
#include <string>

namespace zeb {

/// The error that is being handled, as it describes itself. Called in a `catch` block only.
inline std::string currentErrorText() {
    try {
        throw;
    } catch (const std::bad_alloc&) {
        return "Not enough memory";
    } catch (const std::exception& error) {
        return error.what();
    }
}

}  // namespace zeb
