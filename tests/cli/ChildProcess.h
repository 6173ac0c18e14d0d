#pragma once

#include <sys/types.h>

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zeb::test {

/// The program under test, or another one, as a child of this process.
class ChildProcess {
public:
    struct Options {
        std::vector<std::string> environment{"LC_ALL=C"};  ///< "NAME=VALUE", besides that of this process
        std::string folder = ".";                          ///< to run in
        std::optional<unsigned long> fileSizeLimit{};      ///< bytes
        bool ignoresOutput = false;                        ///< standard output is a pipe that nobody reads
    };
    struct Result {
        int exitCode = -1;  ///< negative: ended by that signal
        std::string out;    ///< what `readLine` has not taken
        std::string error;
    };

    /// Starts `words[0]`, looked up in PATH, with the rest as its arguments.
    ChildProcess(const std::vector<std::string>& words, const Options& options);
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    /// Ends it by force if it still runs.
    ~ChildProcess();

    /// The next line of its standard output without the line feed; nothing at the end.
    std::optional<std::string> readLine();
    void sendSignal(int signal);
    /// Reads on to the end and waits.
    Result finish();

private:
    bool readMore();

    std::unique_ptr<std::FILE, int (*)(std::FILE*)> m_error;
    pid_t m_process = -1;
    int m_out = -1;
    std::string m_buffer;
};

}  // namespace zeb::test
