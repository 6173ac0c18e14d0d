#pragma once

#include <QColor>
#include <QImage>

namespace zeb {

/// The picture in the dock: the application's icon with a bar over its lower edge. Used on the main thread.
class DockProgressView {
public:
    /// A square of `size` x `size` points. Without an icon (a null image) only the bar is drawn; `accent` is
    /// the colour of its filled part.
    DockProgressView(int size, QImage appIcon, QColor accent);

    double progress() const { return m_progress; }
    /// From 0 to 1.
    void setProgress(double progress) { m_progress = progress; }
    /// The palette may change while the program runs.
    void setAccent(const QColor& accent) { m_accent = accent; }

    /// Draws the picture, transparent where nothing is, with so many pixels to a point.
    QImage draw(double devicePixelRatio) const;

private:
    int m_size;
    QImage m_appIcon;
    QColor m_accent;
    double m_progress = 0;
};

}  // namespace zeb
