#include "platform/text/StringTable.h"

#include <algorithm>
#include <stdexcept>

namespace zeb {
namespace {

class Scanner {
public:
    explicit Scanner(std::string_view source) : m_rest(source) {}

    /// Skips blanks and comments; returns true if more text follows.
    bool skipToNext() {
        while (!m_rest.empty()) {
            if (m_rest.starts_with("//")) {
                m_rest.remove_prefix(std::min(m_rest.find('\n'), m_rest.size()));
            } else if (std::string_view(" \t\r\n").find(m_rest.front()) != std::string_view::npos) {
                take();
            } else {
                return true;
            }
        }
        return false;
    }

    void expect(char character) {
        if (!skipToNext() || m_rest.front() != character) fail(std::string("expected ") + character);
        take();
    }

    std::string quotedText() {
        expect('"');
        std::string text;
        while (!m_rest.empty() && m_rest.front() != '"') {
            const char character = take();
            text += character == '\\' ? escaped() : character;
        }
        if (m_rest.empty()) fail("text does not end");
        take();
        return text;
    }

    [[noreturn]] void fail(const std::string& what) const {
        throw std::invalid_argument("line " + std::to_string(m_line) + ": " + what);
    }

private:
    char take() {
        const char character = m_rest.front();
        m_rest.remove_prefix(1);
        if (character == '\n') ++m_line;
        return character;
    }

    char escaped() {
        if (m_rest.empty()) fail("text does not end");
        switch (const char character = take()) {
            case '"':
            case '\\':
                return character;
            case 'n':
                return '\n';
            default:
                fail(std::string("unknown escape \\") + character);
        }
    }

    std::string_view m_rest;
    int m_line = 1;
};

}  // namespace

StringTable StringTable::parse(std::string_view source) {
    StringTable table;
    Scanner scanner(source);
    while (scanner.skipToNext()) {
        std::string key = scanner.quotedText();
        scanner.expect('=');
        std::string text = scanner.quotedText();
        scanner.expect(';');
        const auto [entry, isNew] = table.m_entries.emplace(std::move(key), std::move(text));
        if (!isNew) scanner.fail("key occurs twice: " + entry->first);
    }
    return table;
}

const std::string* StringTable::find(std::string_view key) const {
    const auto entry = m_entries.find(key);
    return entry == m_entries.end() ? nullptr : &entry->second;
}

}  // namespace zeb
