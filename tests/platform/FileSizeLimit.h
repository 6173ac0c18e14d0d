#pragma once

#include <sys/resource.h>

#include <csignal>
#include <stdexcept>

namespace zeb::test {

/// While it lives, no file of this process may grow beyond `bytes`, and trying is an error instead of the
/// end.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN)) {
        if (::getrlimit(RLIMIT_FSIZE, &m_before) != 0) throw std::runtime_error("getrlimit");
        struct rlimit limit = m_before;
        limit.rlim_cur = bytes;
        if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) throw std::runtime_error("setrlimit");
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    ~FileSizeLimit() {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    void (*m_handler)(int);
    struct rlimit m_before {};
};

}  // namespace zeb::test
