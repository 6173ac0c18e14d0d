#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace zeb {

/// An error object as platforms hand them out: a domain, a code within it, and the text that a person sees.
class PlatformError : public std::runtime_error {
public:
    PlatformError(std::string domain, int code, const std::string& description)
        : std::runtime_error(description), m_domain(std::move(domain)), m_code(code) {}

    const std::string& domain() const noexcept { return m_domain; }
    int code() const noexcept { return m_code; }

private:
    std::string m_domain;
    int m_code;
};

}  // namespace zeb
