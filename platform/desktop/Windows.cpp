#include "platform/desktop/Windows.h"

#include <QMargins>
#include <QScreen>

namespace zeb {
namespace {

/// Title bar and borders in the usual sizes of desktops.
constexpr QMargins largeFrame(8, 40, 8, 8);

}  // namespace

QRect roomForContents(const QRect& available) {
    return available.marginsRemoved(largeFrame);
}

QRect placedContents(const QRect& available, const QSize& size) {
    const QRect room = roomForContents(available);
    QRect place(QPoint(), size.boundedTo(room.size()));
    place.moveCenter(room.center());
    return place;
}

void placeOnScreen(QWindow& window) {
    const QRect available = window.screen()->availableGeometry();
    const QSize size = window.size();
    // Set the minimum first: a smaller size would be rejected.
    window.setMinimumSize(window.minimumSize().boundedTo(roomForContents(available).size()));
    window.setGeometry(placedContents(available, size));
}

}  // namespace zeb
