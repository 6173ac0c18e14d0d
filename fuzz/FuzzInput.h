#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <vector>

namespace zeb::fuzz {

using Bytes = std::vector<std::uint8_t>;

/// Splits an input from its front: numbers for decisions, bytes for contents. An exhausted input returns
/// zeros and empty contents.
class FuzzInput {
public:
    FuzzInput(const std::uint8_t* data, std::size_t size) : m_rest(data, size) {}

    bool isEmpty() const { return m_rest.empty(); }

    /// Returns an unsigned number of `bytes` bytes, big-endian.
    std::uint64_t number(std::size_t bytes) {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < bytes; ++i)
            value = value << 8 | (i < m_rest.size() ? m_rest[i] : 0);
        m_rest = m_rest.subspan(std::min(bytes, m_rest.size()));
        return value;
    }

    /// Returns up to `count` bytes in a buffer of exactly that size, so that sanitizers detect overruns.
    Bytes bytes(std::size_t count) {
        const auto taken = m_rest.first(std::min(count, m_rest.size()));
        m_rest = m_rest.subspan(taken.size());
        return {taken.begin(), taken.end()};
    }
    Bytes rest() { return bytes(m_rest.size()); }

private:
    std::span<const std::uint8_t> m_rest;
};

/// Checks a condition for all inputs. Prints it and ends the process if it is false.
inline void require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "broken: %s\n", what);
    std::abort();
}

}  // namespace zeb::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
