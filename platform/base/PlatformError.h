#pragma once

#include <string>
#include <utility>

#include "platform/base/LocalizableError.h"

namespace zeb {

/// An error object as platforms hand them out: a domain, a code within it, and a description.
class PlatformError : public LocalizableError {
public:
    PlatformError(std::string domain, int code, const std::string& description, KeyedText text)
        : LocalizableError(description, std::move(text)), m_domain(std::move(domain)), m_code(code) {}

    const std::string& domain() const noexcept { return m_domain; }
    int code() const noexcept { return m_code; }

private:
    std::string m_domain;
    int m_code;
};

}  // namespace zeb
