#pragma once

#include <memory>

#include "platform/tasks/MainActor.h"

namespace zeb {

/// Runs work through Qt's event loop on the thread that creates and destroys this object. The application
/// object must exist.
class QtMainActor final : public MainActor {
public:
    QtMainActor();
    ~QtMainActor() override;
    QtMainActor(const QtMainActor&) = delete;
    QtMainActor& operator=(const QtMainActor&) = delete;

    void post(Work work) override;
    void postAfter(std::chrono::nanoseconds delay, Work work) override;

private:
    class Queue;
    std::unique_ptr<Queue> m_queue;
};

}  // namespace zeb
