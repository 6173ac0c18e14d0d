#include "cli/Interruption.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>

namespace zeb::cli {
namespace {

// A signal handler can only communicate with the program through a global.
std::atomic<bool> interrupted = false;
static_assert(std::atomic<bool>::is_always_lock_free);

extern "C" void noteInterruption(int) {
    interrupted.store(true, std::memory_order_relaxed);
}

void requestStopOn(int signal) {
    struct sigaction action {};
    if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN) return;
    action.sa_handler = noteInterruption;
    sigemptyset(&action.sa_mask);
    // Reset: the second signal has the default action. Restart: writes of the movie are not interrupted.
    action.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
    sigaction(signal, &action, nullptr);
}

}  // namespace

void prepareProcess() noexcept {
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        // `open` returns the lowest free descriptor, which is this one.
        if (fcntl(descriptor, F_GETFD) == -1) static_cast<void>(open("/dev/null", O_RDWR));
    }
    signal(SIGPIPE, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);
}

void stopOnSignals() noexcept {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        requestStopOn(signal);
}

bool isInterrupted() noexcept {
    return interrupted.load(std::memory_order_relaxed);
}

}  // namespace zeb::cli
