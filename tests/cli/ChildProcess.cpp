#include "tests/cli/ChildProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <utility>

namespace zeb::test {
namespace {

[[noreturn]] void becomeProgram(const std::vector<std::string>& words, const ChildProcess::Options& options,
                                int out, int error) {
    dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
    dup2(out, STDOUT_FILENO);
    dup2(error, STDERR_FILENO);
    if (options.fileSizeLimit) {
        const rlimit limit{*options.fileSizeLimit, *options.fileSizeLimit};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    std::vector<char*> arguments;
    for (const std::string& word : words)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    for (const std::string& variable : options.environment)
        putenv(const_cast<char*>(variable.c_str()));
    if (chdir(options.folder.c_str()) == 0) execvp(arguments[0], arguments.data());
    _exit(127);
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& words, const Options& options)
    : m_error(std::tmpfile(), std::fclose) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    m_out = ends[0];
    m_process = fork();
    if (m_process == 0) becomeProgram(words, options, ends[1], fileno(m_error.get()));
    close(ends[1]);
    if (m_process < 0) throw std::runtime_error("no child process");
    if (options.ignoresOutput) close(std::exchange(m_out, -1));
}

ChildProcess::~ChildProcess() {
    if (m_out >= 0) close(m_out);
    if (m_process <= 0) return;
    kill(m_process, SIGKILL);
    waitpid(m_process, nullptr, 0);
}

std::optional<std::string> ChildProcess::readLine() {
    std::size_t end = m_buffer.find('\n');
    while (end == std::string::npos && readMore())
        end = m_buffer.find('\n');
    if (end == std::string::npos) return std::nullopt;
    std::string line = m_buffer.substr(0, end);
    m_buffer.erase(0, end + 1);
    return line;
}

void ChildProcess::sendSignal(int signal) {
    kill(m_process, signal);
}

ChildProcess::Result ChildProcess::finish() {
    while (readMore()) {
    }
    Result result;
    int status = 0;
    waitpid(std::exchange(m_process, -1), &status, 0);
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    result.out = std::move(m_buffer);
    std::rewind(m_error.get());
    for (int c = std::fgetc(m_error.get()); c != EOF; c = std::fgetc(m_error.get())) {
        result.error += static_cast<char>(c);
    }
    return result;
}

bool ChildProcess::readMore() {
    if (m_out < 0) return false;
    std::array<char, 4096> buffer{};
    const ssize_t count = read(m_out, buffer.data(), buffer.size());
    if (count <= 0) return false;
    m_buffer.append(buffer.data(), static_cast<std::size_t>(count));
    return true;
}

}  // namespace zeb::test
