#include "cli/Console.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <ostream>
#include <utility>

#include "cli/Text.h"
#include "platform/text/LocalizedText.h"
#include "platform/text/SystemErrorText.h"

namespace zeb::cli {
namespace {

std::string_view environment(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

std::string inColour(std::string_view text, Colour colour, const Terminal& terminal) {
    if (text.empty() || !terminal.showsColour || colour == Colour::none) return std::string(text);
    const char* code = colour == Colour::green    ? "\x1b[32m"
                       : colour == Colour::yellow ? "\x1b[33m"
                                                  : "\x1b[31m";
    return code + std::string(text) + "\x1b[0m";
}

}  // namespace

Terminal terminalOf(int descriptor) {
    Terminal terminal;
    terminal.isTerminal = isatty(descriptor) == 1 && environment("TERM") != "dumb";
    // https://no-color.org: any non-empty value counts.
    terminal.showsColour = terminal.isTerminal && environment("NO_COLOR").empty();
    terminal.columns = [descriptor] {
        winsize size{};
        return ioctl(descriptor, TIOCGWINSZ, &size) == 0 ? static_cast<int>(size.ws_col) : 0;
    };
    return terminal;
}

Console::Console(std::ostream& out, std::ostream& error, Terminal outTerminal, Terminal errorTerminal)
    : m_out(out),
      m_error(error),
      m_outTerminal(std::move(outTerminal)),
      m_errorTerminal(std::move(errorTerminal)) {}

void Console::write(std::string_view text) {
    put(text);
}

void Console::writeLine(std::string_view text) {
    put(printable(text) + "\n");
}

void Console::put(std::string_view text) {
    if (!m_out.good()) return;
    errno = 0;
    m_out << text << std::flush;
    if (!m_out.good() && errno != EPIPE)
        complain("standard output: " + localizedText(systemErrorText(errno)));
}

void Console::complain(std::string_view text, Colour colour) {
    m_error << inColour("zeb: " + printable(text), colour, m_errorTerminal) << '\n' << std::flush;
}

void Console::log(std::string_view text) {
    m_error << printable(text) << '\n' << std::flush;
}

bool Console::outIsGood() const {
    return m_out.good();
}

std::string Console::coloured(std::string_view text, Colour colour) const {
    return inColour(text, colour, m_outTerminal);
}

}  // namespace zeb::cli
