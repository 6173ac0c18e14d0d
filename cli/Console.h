#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>

namespace zeb::cli {

/// What is known about where a stream leads.
struct Terminal {
    bool isTerminal = false;   ///< a person is looking, and lines can be redrawn
    bool showsColour = false;  ///< colour is possible and wanted
    /// Its width in characters as of now; 0 when unknown.
    std::function<int()> columns = [] { return 0; };
};

/// Looks at an open file descriptor and the environment (`NO_COLOR`, `TERM`).
Terminal terminalOf(int descriptor);

enum class Colour { none, green, yellow, red };

/// Where the program talks to: results and progress on one stream, everything else on the other.
/// A stream that breaks falls silent, which is said once unless it is a closed pipe; the work goes on.
class Console {
public:
    Console(std::ostream& out, std::ostream& error, Terminal outTerminal, Terminal errorTerminal);

    const Terminal& outTerminal() const { return m_outTerminal; }

    /// Writes `text` as it is to standard output and flushes it.
    void write(std::string_view text);
    /// Writes `text` to standard output, made harmless, and ends the line.
    void writeLine(std::string_view text);
    /// Writes "zeb: " and `text` to standard error, made harmless, and ends the line.
    void complain(std::string_view text, Colour colour = Colour::red);
    /// Writes `text` to standard error, made harmless, and ends the line.
    void log(std::string_view text);

    /// False once standard output could not take something.
    bool outIsGood() const;

    /// `text` in `colour` for standard output, plain where colour is not wanted.
    std::string coloured(std::string_view text, Colour colour) const;

private:
    void put(std::string_view text);

    std::ostream& m_out;
    std::ostream& m_error;
    Terminal m_outTerminal;
    Terminal m_errorTerminal;
};

}  // namespace zeb::cli
