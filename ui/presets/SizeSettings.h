#pragma once

namespace zeb {

/// The size among the converter's settings, in pixels.
class SizeSettings {
public:
    virtual ~SizeSettings() = default;

    virtual int width() const = 0;
    virtual int height() const = 0;
    virtual void setWidth(int width) = 0;
    virtual void setHeight(int height) = 0;
};

}  // namespace zeb
