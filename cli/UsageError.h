#pragma once

#include <stdexcept>

namespace zeb::cli {

/// Arguments that make no sense. `what()` is one line for the person who typed them.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace zeb::cli
