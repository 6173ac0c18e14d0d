#pragma once

#include <deque>
#include <optional>
#include <string>
#include <utility>
#include <variant>

#include "platform/desktop/FilePanels.h"

namespace zeb::fake {

/// Panels that stay open until a test answers them.
class FakePanels final : public FilePanels {
public:
    void open(const OpenPanel& panel, Answer answer) override {
        m_open.push_back({panel, std::move(answer)});
    }
    void save(const SavePanel& panel, Answer answer) override {
        m_open.push_back({panel, std::move(answer)});
    }

    std::size_t count() const { return m_open.size(); }
    const OpenPanel& openPanel() const { return std::get<OpenPanel>(m_open.at(0).panel); }
    const SavePanel& savePanel() const { return std::get<SavePanel>(m_open.at(0).panel); }

    /// Answers and closes the oldest open panel.
    void answer(const std::optional<std::string>& path) {
        const Open panel = std::move(m_open.at(0));
        m_open.pop_front();
        panel.answer(path);
    }

private:
    struct Open {
        std::variant<OpenPanel, SavePanel> panel;
        Answer answer;
    };
    std::deque<Open> m_open;
};

}  // namespace zeb::fake
