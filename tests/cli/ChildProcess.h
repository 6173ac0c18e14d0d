#pragma once

#include <sys/types.h>

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zeb::test {

/// A program as a child process.
class ChildProcess {
public:
    struct Options {
        std::vector<std::string> environment{
            "LC_ALL=C"};           ///< "NAME=VALUE", added to the environment of this process
        std::string folder = ".";  ///< working directory
        std::optional<unsigned long> fileSizeLimit{};  ///< bytes
        bool ignoresOutput = false;                    ///< closes the reading end of standard output
    };
    struct Result {
        int exitCode = -1;  ///< negative: number of the signal that ended it
        std::string out;    ///< output that `readLine` has not returned
        std::string error;
    };

    /// Starts `words[0]`, searched in PATH, with the other words as arguments.
    ChildProcess(const std::vector<std::string>& words, const Options& options);
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    /// Kills the process if it still runs.
    ~ChildProcess();

    /// The next line of standard output without its line feed. Empty at the end.
    std::optional<std::string> readLine();
    void sendSignal(int signal);
    /// Reads the rest of the output and waits for the end of the process.
    Result finish();

private:
    bool readMore();

    std::unique_ptr<std::FILE, int (*)(std::FILE*)> m_error;
    pid_t m_process = -1;
    int m_out = -1;
    std::string m_buffer;
};

}  // namespace zeb::test
