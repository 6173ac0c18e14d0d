#pragma once

#include <stdexcept>
#include <string>
#include <utility>

#include "platform/base/KeyedText.h"

namespace zeb {

/// The base of all typed errors. `what()` is the description: the same words in every language, for logs of
/// developers and for programs without string tables. `text()` is what a person reads; `errorText`
/// (ErrorText.h) makes the sentence of it.
class LocalizableError : public std::runtime_error {
public:
    LocalizableError(const std::string& description, KeyedText text)
        : std::runtime_error(description), m_text(std::move(text)) {}

    const KeyedText& text() const noexcept { return m_text; }

private:
    KeyedText m_text;
};

}  // namespace zeb
