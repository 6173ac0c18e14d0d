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

/// The queue of work, protected by a lock. A Qt event only announces waiting work, so a burst needs one
/// event.
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
        // Work posted during the loop is run by a later event, so that windows are drawn in between.
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
        if (m_waiting.empty()) return {};  // a nested event loop has run the rest
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
    // A timer belongs to a thread: start it on the main thread.
    Queue* queue = m_queue.get();
    post([queue, delay, work = std::move(work)] {
        const auto wait = std::chrono::ceil<std::chrono::milliseconds>(delay);
        QTimer::singleShot(std::max(wait, std::chrono::milliseconds{}), Qt::PreciseTimer, queue, work);
    });
}

}  // namespace zeb
