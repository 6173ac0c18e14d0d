#include "platform/desktop/QtMainActor.h"

#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <QTimer>
#include <algorithm>
#include <deque>
#include <mutex>
#include <utility>

namespace zeb {

/// Work under a lock of our own; Qt's events only tell that there is some, so that a burst costs one event.
class QtMainActor::Queue final : public QObject {
public:
    void add(Work work) {
        const std::lock_guard lock(m_mutex);
        m_waiting.push_back(std::move(work));
        if (!std::exchange(m_isCalled, true)) QCoreApplication::postEvent(this, new QEvent(called()));
    }

    bool event(QEvent* event) override {
        if (event->type() != called()) return QObject::event(event);
        std::size_t pieces = 0;
        {
            const std::lock_guard lock(m_mutex);
            m_isCalled = false;
            pieces = m_waiting.size();
        }
        // What is posted meanwhile has an event of its own: windows are drawn between.
        for (; pieces > 0; --pieces) {
            if (const Work work = take()) work();
        }
        return true;
    }

private:
    static QEvent::Type called() {
        static const auto type = static_cast<QEvent::Type>(QEvent::registerEventType());
        return type;
    }

    Work take() {
        const std::lock_guard lock(m_mutex);
        if (m_waiting.empty()) return {};  // an event loop inside a piece of work has run the rest
        Work work = std::move(m_waiting.front());
        m_waiting.pop_front();
        return work;
    }

    std::mutex m_mutex;
    std::deque<Work> m_waiting;
    bool m_isCalled = false;
};

QtMainActor::QtMainActor() : m_queue(std::make_unique<Queue>()) {}

QtMainActor::~QtMainActor() = default;

void QtMainActor::post(Work work) {
    m_queue->add(std::move(work));
}

void QtMainActor::postAfter(std::chrono::nanoseconds delay, Work work) {
    // Timers belong to a thread, so they are started on the main one.
    Queue* queue = m_queue.get();
    post([queue, delay, work = std::move(work)] {
        const auto wait = std::chrono::ceil<std::chrono::milliseconds>(delay);
        QTimer::singleShot(std::max(wait, std::chrono::milliseconds{}), Qt::PreciseTimer, queue, work);
    });
}

}  // namespace zeb
