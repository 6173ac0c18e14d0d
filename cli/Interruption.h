#pragma once

namespace zeb::cli {

/// Prepares the process, once, before any other file is opened:
/// - A closed pipe and an exceeded file-size limit become write errors instead of ending the process.
/// - Closed standard streams are opened on /dev/null, so that no movie gets their descriptors.
void prepareProcess() noexcept;

/// Makes SIGINT, SIGTERM and SIGHUP request a stop from now on; the second occurrence of a signal ends the
/// process at once. Called by commands that poll `isInterrupted`. A signal that was ignored when the process
/// started (`nohup`, a background job) stays ignored.
void stopOnSignals() noexcept;

/// Returns true once a stop was requested. Callable from any thread.
bool isInterrupted() noexcept;

}  // namespace zeb::cli
