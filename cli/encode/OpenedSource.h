#pragma once

#include <memory>
#include <string>

#include "media/Media.h"

namespace zeb::cli {

/// A video opened for analysis. Passing it on saves the conversion from opening and scanning it again.
class OpenedSource final : public MediaLibrary {
public:
    /// Throws `MediaError`.
    OpenedSource(const MediaLibrary& library, const std::string& path, const IsCancelled& isCancelled)
        : m_library(library), m_path(path), m_asset(library.open(path, isCancelled)) {}

    const MediaAsset& asset() const { return *m_asset; }

    std::shared_ptr<const MediaAsset> open(const std::string& path, IsCancelled isCancelled) const override {
        return path == m_path ? m_asset : m_library.open(path, std::move(isCancelled));
    }

private:
    const MediaLibrary& m_library;
    std::string m_path;
    std::shared_ptr<const MediaAsset> m_asset;
};

}  // namespace zeb::cli
