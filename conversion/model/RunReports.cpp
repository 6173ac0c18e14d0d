#include "conversion/model/RunReports.h"

#include <utility>

namespace zeb {

bool RunReports::add(const std::string& text, std::optional<double> fraction) {
    const std::lock_guard lock(m_mutex);
    m_batch.lines.push_back(text);
    if (m_batch.lines.size() > maximumLines) m_batch.lines.pop_front();
    if (fraction) m_batch.fraction = *fraction;
    return !std::exchange(m_isOnItsWay, true);
}

RunReports::Batch RunReports::take() {
    const std::lock_guard lock(m_mutex);
    m_isOnItsWay = false;
    Batch batch;
    batch.fraction = m_batch.fraction;
    batch.lines.swap(m_batch.lines);
    return batch;
}

}  // namespace zeb
