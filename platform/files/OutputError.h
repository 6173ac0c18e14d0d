#pragma once

#include <string>

#include "platform/base/Error.h"

namespace zeb {

/// A path at which no file can be created, or a created file that is no longer at its path. Description and
/// text begin with the path, unless it is empty. Domain "Output".
class OutputError : public PlatformError {
public:
    enum class Case {
        noName,      ///< the path is empty
        isInput,     ///< the path is the input, perhaps by a link
        isFolder,    ///< a folder, or a link to one
        notRegular,  ///< a pipe, device or socket, or a link to one
        exists,      ///< a file or link that must not be overwritten
        noFolder,    ///< the folder of the path is missing
        notAFolder,  ///< the folder of the path is not a folder
        appeared,    ///< another process created a file at the path
        replaced,    ///< another file replaced the created file
        removed,     ///< the created file, or its folder, was removed
    };

    /// `folder` is for `noFolder` and `notAFolder`.
    OutputError(Case errorCase, const std::string& path, const std::string& folder = {});

    Case errorCase() const noexcept { return static_cast<Case>(code()); }
    const std::string& path() const noexcept { return m_path; }

private:
    OutputError(Case errorCase, const std::string& path, const KeyedText& text);

    std::string m_path;
};

}  // namespace zeb
