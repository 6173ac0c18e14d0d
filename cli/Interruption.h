#pragma once

namespace zeb::cli {

/// Sets up what the process wants from the system, once, before anything else is opened:
/// - A closed pipe and an exceeded file-size limit become errors of the write instead of ending the process.
/// - Standard input, output and error that came closed are tied to nothing, so that no movie gets their
/// number.
void prepareProcess() noexcept;

/// Makes interrupt, termination and hang-up request a stop from now on; the same signal a second time ends
/// the process at once. Called by what asks `isInterrupted` often. A signal that was ignored when the process
/// started (`nohup`, a background job) stays ignored.
void stopOnSignals() noexcept;

/// True once a stop was requested. Callable from any thread.
bool isInterrupted() noexcept;

}  // namespace zeb::cli
