#pragma once

#include <stdexcept>
#include <string>
#include <utility>

#include "platform/base/KeyedText.h"

namespace zeb {

/// The base of all typed errors. `what()` is the description: the same words in every language, for logs and
/// for programs without string tables. `text()` is the localisable text for the user; `errorText`
/// (ErrorText.h) returns it as a sentence.
class LocalizableError : public std::runtime_error {
public:
    LocalizableError(const std::string& description, KeyedText text)
        : std::runtime_error(description), m_text(std::move(text)) {}

    const KeyedText& text() const noexcept { return m_text; }

private:
    KeyedText m_text;
};

/// An error with a domain, a code within it, and a description.
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
