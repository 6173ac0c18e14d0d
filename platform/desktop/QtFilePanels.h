#pragma once

#include <QFileDialog>
#include <QPalette>
#include <functional>
#include <memory>

#include "platform/desktop/FilePanels.h"

class QWindow;

namespace zeb {

/// The desktop's file dialogs if it has any, else Qt's. A QApplication must exist.
class QtFilePanels final : public FilePanels {
public:
    QtFilePanels();
    ~QtFilePanels() override;

    /// Sets the window over which panels open (may be null), and the colours of Qt's panels.
    void setSurroundings(std::function<QWindow*()> parent, std::function<QPalette()> palette);

    void open(const OpenPanel& panel, Answer answer) override;
    void save(const SavePanel& panel, Answer answer) override;

private:
    void show(std::unique_ptr<QFileDialog> dialog, Answer answer);

    std::function<QWindow*()> m_parent;
    std::function<QPalette()> m_palette;
    std::unique_ptr<QFileDialog> m_dialog;  ///< while one is open
};

}  // namespace zeb
