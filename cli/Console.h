#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>

namespace zeb::cli {

/// Properties of the terminal or file behind a stream.
struct Terminal {
    bool isTerminal = false;   ///< for a user; lines can be redrawn
    bool showsColour = false;  ///< colour is supported and not disabled
    /// Returns the current width in characters; 0 if unknown.
    std::function<int()> columns = [] { return 0; };
};

/// Inspects an open file descriptor and the environment (`NO_COLOR`, `TERM`).
Terminal terminalOf(int descriptor);

enum class Colour { none, green, yellow, red };

/// The output streams of the program: results and progress on one, everything else on the other. After a
/// write error a stream is no longer written to. The error is reported once, unless it is a closed pipe, and
/// the work continues.
class Console {
public:
    Console(std::ostream& out, std::ostream& error, Terminal outTerminal, Terminal errorTerminal);

    const Terminal& outTerminal() const { return m_outTerminal; }

    /// Writes `text` unchanged to standard output and flushes it.
    void write(std::string_view text);
    /// Writes `text`, escaped by `printable`, and a line end to standard output.
    void writeLine(std::string_view text);
    /// Writes "zeb: ", `text`, escaped by `printable`, and a line end to standard error.
    void complain(std::string_view text, Colour colour = Colour::red);
    /// Writes `text`, escaped by `printable`, and a line end to standard error.
    void log(std::string_view text);

    /// Returns false after a write error on standard output.
    bool outIsGood() const;

    /// Returns `text` in `colour` for standard output, or plain if colour is disabled.
    std::string coloured(std::string_view text, Colour colour) const;

private:
    void put(std::string_view text);

    std::ostream& m_out;
    std::ostream& m_error;
    Terminal m_outTerminal;
    Terminal m_errorTerminal;
};

}  // namespace zeb::cli
